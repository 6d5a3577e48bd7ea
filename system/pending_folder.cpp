#include "system/pending_folder.h"

#include <fcntl.h>

#include <cerrno>
#include <filesystem>
#include <set>
#include <system_error>

#include "system/pending_output.h"

namespace quorvane {

namespace fs = std::filesystem;

namespace {

std::string withoutSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    return path;
}

}  // namespace

PendingFolder::PendingFolder(const std::string& path, bool into_others)
    : m_path(withoutSlash(path)), m_place(placeOf(m_path)) {
    std::error_code failed;
    requireFolderFor(m_place, path);
    if (fs::exists(m_place, failed) && !fs::is_directory(m_place, failed))
        throw Error(path + ": is a file, not a folder");
    if (!into_others && fs::is_directory(m_place, failed) && !fs::is_empty(m_place, failed))
        throw FolderNotEmpty(path + ": the folder is not empty");
    // Inside the folder where there is one: it may be another disk than what it lies in.
    m_was_there = fs::is_directory(m_place, failed);
    std::string pending;
    do {
        pending = temporaryBeside(m_was_there ? m_place + "/" + kStem : m_place);
    } while (!fs::create_directory(pending, failed) && !failed);
    if (failed) throwFor(path + ": cannot be written", failed.value());
    m_pending = pending;
}

PendingFolder::~PendingFolder() {
    std::error_code ignored;
    if (!m_pending.empty()) fs::remove_all(m_pending, ignored);
}

void PendingFolder::add(const std::string& name,
                        const std::function<void(int descriptor, const std::string&)>& write) {
    const std::string shown = m_path + "/" + name;
    const Descriptor file(
        open((m_pending + "/" + name).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    const auto fail = [&] { throwFor(shown + ": cannot be written", errno); };
    if (!file) fail();
    write(file.number(), shown);
    if (!reachesDisk(file.number())) fail();
}

void PendingFolder::commit(const std::function<bool(const std::string& name)>& is_old) {
    try {
        if (m_was_there) {
            std::set<std::string> names;
            for (const auto& entry : fs::directory_iterator(m_pending))
                names.insert(entry.path().filename().string());
            for (const std::string& name : names) fs::rename(m_pending + "/" + name, m_place + "/" + name);
            for (const auto& entry : fs::directory_iterator(m_place)) {
                const std::string name = entry.path().filename().string();
                if (names.count(name) == 0 && is_old(name)) fs::remove(entry.path());
            }
            fs::remove(m_pending);
        } else {
            fs::rename(m_pending, m_place);
        }
    } catch (const fs::filesystem_error& failed) {
        throwFor(m_path + ": cannot be written", failed.code().value());
    }
    m_pending.clear();
}

}  // namespace quorvane
