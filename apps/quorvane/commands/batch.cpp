#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "apps/quorvane/batch/batch_worker.h"
#include "apps/quorvane/batch/finished.h"
#include "apps/quorvane/batch/photo_list.h"
#include "apps/quorvane/batch/result.h"
#include "apps/quorvane/batch/shard.h"
#include "apps/quorvane/batch/worker_pool.h"
#include "apps/quorvane/commands/command.h"
#include "apps/quorvane/commands/render.h"
#include "apps/quorvane/terminal/progress.h"
#include "apps/quorvane/terminal/text.h"
#include "apps/quorvane/terminal/usage_error.h"
#include "system/cancel.h"
#include "system/cores.h"
#include "system/error.h"
#include "system/pending_folder.h"
#include "system/pending_output.h"

namespace quorvane::app {

namespace fs = std::filesystem;

namespace {

constexpr int kMostJobs = 256;
/// What a job takes of a photo of 12 megapixels, drawn at 1920 pixels, with its encoder.
constexpr uint64_t kMemoryAJob = uint64_t{1} << 30;
/// After a signal. Spot machines and Kubernetes give half a minute, impatient service managers ten seconds.
constexpr std::chrono::seconds kPatience(7);

struct BatchOptions {
    PhotoListOptions list;
    int jobs = 0;  ///< 0: as many as suit this machine
    Shard shard;
    std::string results;
    bool resume = false;
    bool fail_fast = false;
    bool quiet = false;
    std::shared_ptr<void> render;  ///< what the options of `render` are set to
    std::vector<const Option*> of_render;
};

void check(const BatchOptions& options) {
    const PhotoListOptions& list = options.list;
    const int ways =
        (list.inputs.empty() ? 0 : 1) + (list.list.empty() ? 0 : 1) + (list.manifest.empty() ? 0 : 1);
    if (ways != 1)
        throw UsageError("photos or folders, --from LIST or --manifest FILE.jsonl: one of them is wanted");
    if (list.ends_in_nul && list.list.empty()) throw UsageError("--null: goes with --from");
    if (list.out == "-") throw UsageError("-: a batch writes files; name a folder");
    if (namesOneFile(list.out))
        throw UsageError(
            "-o " + list.out +
            ": a batch makes a file of each photo; a folder is wanted, such as clips/, or a path "
            "with {name} in it, such as '{name}" +
            fs::path(list.out).extension().string() + "'");
}

int jobsFor(const BatchOptions& options) {
    if (options.jobs > 0) return options.jobs;
    const uint64_t memory = freeMemory();
    const int by_memory =
        memory == 0 ? kMostJobs : static_cast<int>(std::min<uint64_t>(kMostJobs, memory / kMemoryAJob));
    return std::clamp(usableCores(), 1, std::max(1, by_memory));
}

/// The list's photos that belong to this shard. Throws Error and UsageError, before anything is written.
std::vector<BatchPhoto> photosFor(const BatchOptions& options) {
    std::vector<std::string> words;
    for (const Option* option : options.of_render) {
        const std::vector<std::string> more = option->givenWords();
        words.insert(words.end(), more.begin(), more.end());
    }
    std::vector<BatchPhoto> all = listPhotos(options.list, words);
    for (BatchPhoto& photo : all) {
        try {
            // Some name is wanted, whatever is to be written.
            photo.output = photo.name.empty() ? "name" : photo.name;
            nameOutput(options.list, endingFor(photo.words()), &photo);
            checkRenderWords(photo.words());
        } catch (const UsageError& error) {
            throw UsageError(options.list.manifest.empty() ? error.what()
                                                           : photo.photo + ": " + error.what());
        }
    }
    refuseCollisions(all);
    std::vector<BatchPhoto> photos;
    for (size_t i = 0; i < all.size(); ++i)
        if (options.shard.has(i)) photos.push_back(std::move(all[i]));
    return photos;
}

std::string withoutSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

void makeFolders(const std::vector<BatchPhoto>& photos, const std::string& folder) {
    std::set<fs::path> folders = {folder};
    for (const BatchPhoto& photo : photos) folders.insert(fs::path(withoutSlash(photo.output)).parent_path());
    for (const fs::path& each : folders) {
        std::error_code failed;
        if (!each.empty() && !fs::is_directory(each, failed)) fs::create_directories(each, failed);
        if (failed) throwFor(each.string() + ": cannot be made", failed.value());
    }
}

/// Removes what killed workers have left behind of these outputs. No other process works on them.
void removeLeftovers(const std::vector<BatchPhoto>& photos) {
    std::set<fs::path> outputs, folders;
    for (const BatchPhoto& photo : photos) {
        const fs::path output = withoutSlash(photo.output);
        // Long names are shortened in it.
        outputs.insert(output.parent_path() /
                       nameOfLeftover(fs::path(temporaryBeside(output.string())).filename().string()));
        folders.insert(output.parent_path());
        std::error_code ignored;
        if (!fs::is_directory(output, ignored)) continue;
        folders.insert(output);
        outputs.insert(output / PendingFolder::kStem);
    }
    for (const fs::path& folder : folders) {
        std::error_code failed;
        std::vector<fs::path> leftovers;
        for (fs::directory_iterator entry(folder.empty() ? "." : folder, failed);
             !failed && entry != fs::directory_iterator(); entry.increment(failed)) {
            const std::string name = nameOfLeftover(entry->path().filename().string());
            if (!name.empty() && outputs.count(folder / name) > 0) leftovers.push_back(entry->path());
        }
        for (const fs::path& leftover : leftovers) fs::remove_all(leftover, failed);
    }
}

/// Where the lines of results go.
class Results {
  public:
    Results(const BatchOptions& options, const std::string& folder)
        : m_name(!options.results.empty()
                     ? options.results
                     : (fs::path(folder) / ("results" + options.shard.suffix() + ".jsonl")).string()),
          m_file(m_name == "-" ? Descriptor(dup(STDOUT_FILENO)) : openLines(m_name)) {
        if (m_name != "-") keepLines(m_file.number(), options.resume, m_name);
    }

    const std::string& name() const { return m_name; }

    void add(const PhotoResult& result) { appendLine(m_file.number(), resultLine(result), m_name); }

  private:
    std::string m_name;
    Descriptor m_file;
};

/// A batch at work.
class Batch {
  public:
    Batch(const BatchOptions& options, std::vector<BatchPhoto> photos, const std::string& folder)
        : m_options(options),
          m_photos(std::move(photos)),
          m_finished(folder, options.shard, options.resume),
          m_results(options, folder),
          m_jobs(jobsFor(options)),
          m_pool(m_jobs, std::max(1, usableCores() / m_jobs), m_finished.descriptor()),
          m_work(m_photos.size()),
          m_progress(static_cast<int>(m_photos.size()), options.quiet) {}

    /// Throws Error where a photo has failed, and Cancelled after a signal.
    void run() {
        removeLeftovers(m_photos);
        try {
            work();
        } catch (...) {
            // Nobody would note what the workers do now.
            interrupt();
            throw;
        }
        m_pool.end(kPatience);
        removeLeftovers(m_photos);
        conclude();
    }

  private:
    struct Work {
        std::string digest;
        std::string key;
    };

    void work() {
        size_t next = 0;
        while (next < m_photos.size() || m_pool.isBusy()) {
            throwIfCancelled();
            const bool ends = m_options.fail_fast && m_never + m_again > 0;
            if (ends && !m_pool.isBusy()) return;
            if (!ends && next < m_photos.size() && m_pool.hasIdle()) {
                begin(next++);
                continue;
            }
            const std::optional<WorkerPool::Answer> answer = m_pool.wait();
            if (!answer) throw Cancelled();
            conclude(answer->photo, answer->outcome);
        }
    }

    /// Has a photo rendered, unless that was done.
    void begin(size_t place) {
        const BatchPhoto& photo = m_photos[place];
        try {
            m_work[place] = {m_digests.of(photo.photo), keyOf(photo, &m_digests)};
            if (m_options.resume && m_finished.has(m_work[place].key, photo.output)) {
                ++m_skipped;
                m_results.add({&photo, m_work[place].digest, "", true});
                step();
                return;
            }
            std::vector<std::string> words = photo.words();
            // Frames of its own may be replaced, where a batch was killed before it could note them.
            std::error_code ignored;
            if (m_options.resume && m_finished.begun(m_work[place].key))
                words.emplace_back("--force");
            else if (!fs::exists(photo.output, ignored) || fs::is_empty(photo.output, ignored))
                m_finished.begin(m_work[place].key);
            m_pool.give(place, words);
        } catch (const Error&) {
            conclude(place, outcomeText(outcomeOf(failureOf(std::current_exception()))));
        }
    }

    void conclude(size_t place, const std::string& outcome) {
        const BatchPhoto& photo = m_photos[place];
        const int exit = exitOf(outcome);
        if (exit == 0) {
            ++m_done;
            m_finished.add(m_work[place].key, photo.output);
        } else {
            ++(exit == kSysexitTryAgain ? m_again : m_never);
            m_progress.wipe();
            std::fprintf(stderr, "quorvane: %s\n", printable(errorOf(outcome)).c_str());
        }
        m_results.add({&photo, m_work[place].digest, outcome, false});
        step();
    }

    void step() { m_progress.step(static_cast<int>(m_done + m_skipped + m_never + m_again)); }

    void interrupt() {
        const std::vector<size_t> left = m_pool.end(kPatience);
        removeLeftovers(m_photos);
        m_progress.wipe();
        std::fprintf(stderr, "quorvane: %zu of %zu photos are done; --resume goes on\n", m_done + m_skipped,
                     m_photos.size());
        const std::string outcome = outcomeText(outcomeOf(failureOf(std::make_exception_ptr(Cancelled()))));
        for (const size_t place : left)
            m_results.add({&m_photos[place], m_work[place].digest, outcome, false});
    }

    /// Says what came of all.
    void conclude() {
        m_progress.wipe();
        const size_t failed = m_never + m_again;
        std::string text = formatted("%zu of %zu photos rendered", m_done, m_photos.size());
        if (m_skipped > 0) text += formatted(", %zu done before", m_skipped);
        if (failed > 0) text += formatted(", %zu failed", failed);
        if (m_again > 0) text += formatted(" (%zu may succeed later, by --resume)", m_again);
        if (m_results.name() != "-") text += ": " + m_results.name();
        if (m_again > 0) throw TemporaryError(text);
        if (m_never > 0) throw Error(text);
        if (!m_options.quiet && isatty(STDERR_FILENO) != 0)
            std::fprintf(stderr, "%s\n", printable(text).c_str());
    }

    const BatchOptions& m_options;
    const std::vector<BatchPhoto> m_photos;
    Finished m_finished;
    Results m_results;
    const int m_jobs;
    WorkerPool m_pool;
    Digests m_digests;
    std::vector<Work> m_work;  ///< of each photo
    Progress m_progress;
    size_t m_done = 0, m_skipped = 0, m_never = 0, m_again = 0;
};

void run(const BatchOptions& options) {
    check(options);
    const std::vector<BatchPhoto> photos = photosFor(options);
    const std::string folder = outputFolder(options.list.out);
    makeFolders(photos, folder);
    Batch(options, photos, folder).run();
}

std::function<void()> prepare(CommandLine* line) {
    const auto options = std::make_shared<BatchOptions>();
    line->repeated(
        "PHOTOS", [options](const std::string& text) { options->list.inputs.push_back(text); },
        "photos, and folders of photos; depth maps called after a photo go with it, as in render");
    line->text("--from", &options->list.list,
               "take the photos' paths from FILE, one a line; - for standard input")
        .called("FILE");
    line->flag("-0,--null", &options->list.ends_in_nul,
               "paths of --from end in a zero byte, as find -print0 has it");
    line->text(
            "--manifest", &options->list.manifest,
            "take JSON lines from FILE, - for standard input: {\"photo\": PATH} and, where wanted, "
            "\"depth\": "
            "PATH, \"output\": a path below OUT, and \"options\": an object with options of render, such as "
            "{\"motion\": \"circle\"}")
        .called("FILE.jsonl");
    line->text("-o,--out", &options->list.out,
               "a folder, for NAME.mp4 of each photo; or a path in which {name} stands for the photo's name, "
               "such as "
               "'out/{name}.gif' or 'out/{name}/'")
        .called("OUT")
        .required();
    line->whole("-j,--jobs", &options->jobs, 0, kMostJobs,
                "photos that are rendered at a time, in a process each; they share the cores among them; 0 "
                "is one for "
                "each core, and no more than memory suffices for");
    line->flag("--resume", &options->resume,
               "skip what an earlier batch has made of the same photo, depth map, options and version");
    line->flag("--fail-fast", &options->fail_fast, "begin no photo after one has failed");
    line->parsed(
            "--shard", [options](const std::string& text) { options->shard = parseShard(text); },
            "do every Nth photo, from the Ith on; auto: both from the variables of a Slurm or AWS Batch "
            "array; "
            "auto/N: I from there, or from those of a Kubernetes Indexed Job")
        .called("I/N");
    line->text(
            "--results", &options->results,
            "write a JSON line for each photo to FILE, - for standard output (default: results.jsonl in OUT)")
        .called("FILE");
    line->flag("-q,--quiet", &options->quiet, "no progress bar");
    const size_t own = line->options().size();
    options->render = addRenderOptions(line);
    for (size_t i = own; i < line->options().size(); ++i) options->of_render.push_back(&line->options()[i]);
    return [options] { run(*options); };
}

}  // namespace

Command batchCommand() {
    return {"batch",
            "render many photos, with the same options or each with its own",
            {{"a folder of photos, some with depth maps next to them", "quorvane batch photos/ -o clips/"},
             {"pages to share, of the photos on a list's lines",
              "quorvane batch --from list.txt -o 'pages/{name}.html'"},
             {"what is missing after an interruption, four at a time",
              "quorvane batch photos/ -o clips/ --resume --jobs 4"},
             {"the first of eight parts, for eight machines", "quorvane batch photos/ -o clips/ --shard 1/8"},
             {"each photo with options of its own", "quorvane batch --manifest list.jsonl -o clips/"}},
            prepare};
}

}  // namespace quorvane::app
