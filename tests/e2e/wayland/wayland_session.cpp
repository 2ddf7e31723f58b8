#include "tests/e2e/wayland/wayland_session.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>

#include "platform/linux/posix/unix_socket.h"

namespace skavlo {

namespace {

constexpr std::chrono::seconds kStartTime(30);

// Without what a test runs under; the kernel ends the program with the test.
std::vector<std::string> asNobody(const std::vector<std::string>& command) {
    const std::string id = std::to_string(kSessionUser);
    std::vector<std::string> result{"setpriv",        "--reuid",     id,    "--regid", id,
                                    "--clear-groups", "--pdeathsig", "TERM"};
    result.insert(result.end(), command.begin(), command.end());
    return result;
}

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool isDisplay(const std::string& name) {
    return name.starts_with("wayland-") && !name.ends_with(".lock");
}

// The name of the first file for which `wanted` holds; empty: the deadline passed, or the process
// ended first.
template <typename Wanted>
std::string waitForFile(const std::string& directory, Wanted wanted, int processEnd,
                        const rig::Deadline& deadline) {
    const rig::FileDescriptor watch(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    inotify_add_watch(watch.get(), directory.c_str(), IN_CREATE | IN_MODIFY);
    while (true) {
        for (const auto& entry : std::filesystem::directory_iterator(directory)) {
            const std::string name = entry.path().filename();
            if (wanted(name)) return name;
        }
        if (rig::waitReadable({watch.get(), processEnd}, deadline) != watch.get()) return {};
        std::array<char, 4096> events{};
        while (read(watch.get(), events.data(), events.size()) > 0) {
        }
    }
}

// The socket's file is there a moment before the compositor listens.
bool waitUntilAccepts(const std::string& path, int processEnd, const rig::Deadline& deadline) {
    constexpr std::chrono::milliseconds kLookAgain(5);
    while (!connectToSocket(path)) {
        if (deadline.passed() || rig::waitReadable({processEnd}, rig::Deadline(kLookAgain))) {
            return false;
        }
    }
    return true;
}

}  // namespace

std::optional<std::string> whyNotRunnable(const std::string& program) {
    if (geteuid() != 0) return "only root can run " + program + " as another user";
    std::istringstream path(getenv("PATH"));
    for (std::string folder; std::getline(path, folder, ':');) {
        if (access((folder + "/" + program).c_str(), X_OK) == 0) return std::nullopt;
    }
    return program + " is not installed";
}

void WaylandSession::Remove::operator()(std::string* path) const {
    std::error_code ignored;
    std::filesystem::remove_all(*path, ignored);
    delete path;
}

std::string WaylandSession::file(const std::string& name) const {
    return *directory_ + "/" + name;
}

std::string WaylandSession::expand(std::string text) const {
    for (std::size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at)) {
        text.replace(at, 1, *directory_);
        at += directory_->size();
    }
    return text;
}

Result<WaylandSession> WaylandSession::start(const WaylandSessionOptions& options) {
    WaylandSession session;
    std::string pattern = std::filesystem::temp_directory_path() / "skavlo-session-XXXXXX";
    if (!mkdtemp(pattern.data())) return Error{"no session directory"};
    session.directory_.reset(new std::string(pattern));
    for (const auto& [name, text] : options.files) {
        std::ofstream(session.file(name)) << session.expand(text);
    }
    if (chown(pattern.c_str(), kSessionUser, kSessionUser) != 0)
        return Error{"the directory stays root's"};

    std::vector<std::string> environment{
        "LD_PRELOAD", "UMOCKDEV_DIR",    "WAYLAND_DISPLAY",           "DISPLAY",
        "XAUTHORITY", "HOME=" + pattern, "XDG_RUNTIME_DIR=" + pattern};
    for (const std::string& variable : options.environment) {
        environment.push_back(session.expand(variable));
    }
    if (options.bus) {
        auto bus = rig::SessionBus::start(environment, asNobody({}));
        if (!bus) return bus.error();
        session.bus_ = std::move(*bus);
        environment.push_back(session.bus_->environment());
    }
    std::vector<std::string> command = asNobody(options.command);
    std::transform(command.begin(), command.end(), command.begin(),
                   [&](const std::string& word) { return session.expand(word); });
    const rig::FileDescriptor log(
        open(session.file("log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
    auto compositor = rig::Child::start({command, environment, {}, log.get()});
    if (!compositor) return compositor.error();
    session.compositor_ = std::move(*compositor);
    const int ended = session.compositor_->endDescriptor();
    const rig::Deadline deadline(kStartTime);
    session.display_ = skavlo::waitForFile(pattern, isDisplay, ended, deadline);
    if (session.display_.empty() || !waitUntilAccepts(session.socket(), ended, deadline)) {
        return Error{options.command.front() + " did not start:\n" + contents(session.file("log"))};
    }
    return session;
}

std::vector<std::string> WaylandSession::environment() const {
    return {"XDG_RUNTIME_DIR=" + *directory_, "WAYLAND_DISPLAY=" + display_, "DISPLAY",
            "XAUTHORITY"};
}

std::vector<std::string> WaylandSession::userEnvironment() const {
    auto environment = this->environment();
    environment.insert(environment.end(), {"LD_PRELOAD", "UMOCKDEV_DIR", "HOME=" + *directory_});
    if (bus_) environment.push_back(bus_->environment());
    return environment;
}

std::string WaylandSession::busAddress() const {
    constexpr std::string_view kName = "DBUS_SESSION_BUS_ADDRESS=";
    return bus_ ? bus_->environment().substr(kName.size()) : std::string();
}

bool WaylandSession::waitForFile(const std::string& name, const rig::Deadline& deadline) const {
    return !skavlo::waitForFile(
                *directory_, [&](const std::string& found) { return found == name; }, -1, deadline)
                .empty();
}

std::string WaylandSession::waitForContents(const std::string& name,
                                            const rig::Deadline& deadline) const {
    skavlo::waitForFile(
        *directory_,
        [&](const std::string& found) { return found == name && !contents(file(name)).empty(); },
        -1, deadline);
    return contents(file(name));
}

Result<rig::Child> WaylandSession::start(const std::vector<std::string>& arguments,
                                         int inherited) const {
    rig::ChildOptions options{asNobody(arguments), userEnvironment(), {}, -1};
    if (inherited >= 0) options.inherited.push_back(inherited);
    return rig::Child::start(options);
}

Result<std::string> WaylandSession::run(const std::vector<std::string>& arguments) const {
    const std::string path = file("output");
    const rig::FileDescriptor output(
        open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
    auto child = rig::Child::start({asNobody(arguments), userEnvironment(), {}, output.get()});
    if (!child) return child.error();
    const auto status = child->wait(rig::Deadline(kStartTime));
    if (status != 0) return Error{arguments.front() + " failed: " + contents(path)};
    return contents(path);
}

}  // namespace skavlo
