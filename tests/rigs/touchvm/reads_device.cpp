#include "tests/rigs/touchvm/reads_device.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

namespace skavlo::test {

namespace {

// Descriptors come and go while they are looked at.
std::set<std::string> descriptorsOf(const std::filesystem::path& process, const std::string& node) {
    std::error_code gone;
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(process / "fd", gone)) {
        if (std::filesystem::read_symlink(entry.path(), gone) == node) {
            found.insert(entry.path().filename());
        }
    }
    return found;
}

// The descriptors that the process's epoll descriptors watch.
std::set<std::string> watchedBy(const std::filesystem::path& process) {
    std::error_code gone;
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(process / "fdinfo", gone)) {
        std::ifstream file(entry.path());
        for (std::string word; file >> word;) {
            if (word == "tfd:" && file >> word) found.insert(word);
        }
    }
    return found;
}

}  // namespace

bool readsDevice(pid_t process, const std::string& node) {
    const std::filesystem::path directory = "/proc/" + std::to_string(process);
    const auto watched = watchedBy(directory);
    const auto open = descriptorsOf(directory, node);
    return std::any_of(open.begin(), open.end(),
                       [&](const std::string& descriptor) { return watched.contains(descriptor); });
}

}  // namespace skavlo::test
