#include "pending_output.h"

#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include "error.h"

namespace quorvane::media {

namespace fs = std::filesystem;

std::string temporaryBeside(const std::string& path) {
    static int made = 0;
    const fs::path place(path);
    return (place.parent_path() / ("." + place.stem().string() + "." + std::to_string(getpid()) + "-" +
                                   std::to_string(++made) + place.extension().string()))
        .string();
}

PendingOutput::PendingOutput(std::string path)
    : m_path(std::move(path)), m_temporary(temporaryBeside(m_path)) {
    std::error_code ignored;
    const fs::path folder = fs::path(m_path).parent_path();
    if (!folder.empty() && !fs::is_directory(folder, ignored))
        throw Error(m_path + ": there is no folder " + folder.string());
    if (fs::is_directory(m_path, ignored)) throw Error(m_path + ": is a folder, not a file");
}

PendingOutput::~PendingOutput() {
    std::error_code ignored;
    if (!m_temporary.empty()) fs::remove(m_temporary, ignored);
}

void PendingOutput::commit() {
    std::error_code failed;
    fs::rename(m_temporary, m_path, failed);
    if (failed) throw Error(m_path + ": cannot be written (" + failed.message() + ")");
    m_temporary.clear();
}

}  // namespace quorvane::media
