// Runs an ONNX model for the program that started this: tensors in, tensors out, on the socket that is standard input.
// Messages of both directions: a length of 32 bits, lower byte first, so many bytes of JSON, then the tensors' bytes.
//   {"load": PATH}                            answered with the names, types and shapes of inputs and outputs
//   {"name", "type", "shape", "bytes"} + data answered with the outputs, and their data in that order
// Failures are answered with {"error": TEXT}. node -e THIS PACKAGE, the folder of onnxruntime-node.
'use strict';
const fs = require('fs');
const {Worker} = require('worker_threads');
const kSocket = 0;
const kArrays = {
  float32: Float32Array, uint8: Uint8Array, float16: globalThis.Float16Array ?? Uint16Array,
};

function receive(count) {
  const bytes = Buffer.alloc(count);
  for (let at = 0; at < count;) {
    const got = fs.readSync(kSocket, bytes, at, count - at);
    if (got === 0) process.exit(0);
    at += got;
  }
  return bytes;
}

function send(bytes) {
  for (let at = 0; at < bytes.length;) at += fs.writeSync(kSocket, bytes, at, bytes.length - at);
}

function answer(header, tensors = []) {
  const text = Buffer.from(JSON.stringify(header));
  const length = Buffer.alloc(4);
  length.writeUInt32LE(text.length);
  [length, text, ...tensors].forEach(send);
}

const described = (name, tensor) => ({name, type: tensor.type ?? 'none', shape: tensor.shape ?? tensor.dims ?? []});

// A network that is running notices nothing: where the program is killed meanwhile, this thread ends the process.
new Worker(`setInterval(() => process.ppid !== ${process.ppid} && process.kill(process.pid, 'SIGKILL'), 500);`,
           {eval: true}).unref();

async function serve() {
  const ort = require(process.argv[1]);
  let session = null;
  for (;;) {
    const request = JSON.parse(receive(receive(4).readUInt32LE()));
    const data = receive(request.bytes ?? 0);
    try {
      if (request.load !== undefined) {
        session = await ort.InferenceSession.create(
            request.load, {executionProviders: ['cpu'], logSeverityLevel: 4});
        const all = (metadata) => metadata.map((value) => described(value.name, value));
        answer({inputs: all(session.inputMetadata), outputs: all(session.outputMetadata)});
      } else {
        const values = new kArrays[request.type](data.buffer, data.byteOffset, request.count);
        const tensor = new ort.Tensor(request.type, values, request.shape);
        const results = Object.entries(await session.run({[request.name]: tensor}))
            .filter(([, result]) => result.type in kArrays);
        answer({outputs: results.map(([name, result]) => described(name, result))},
               results.map(([, {data}]) => Buffer.from(data.buffer, data.byteOffset, data.byteLength)));
      }
    } catch (error) {
      answer({error: String(error.message ?? error)});
    }
  }
}

serve().catch((error) => answer({error: String(error.message ?? error)}));
