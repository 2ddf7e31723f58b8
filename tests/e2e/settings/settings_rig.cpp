#include "tests/e2e/settings/settings_rig.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>

#include "platform/linux/plist/plist_property_lists.h"
#include "settings/loose_value.h"

namespace skavlo {

SettingsRig::SettingsRig() {
    std::string home = std::filesystem::temp_directory_path() / "skavlo-home-XXXXXX";
    home_ = mkdtemp(home.data());
    setenv("HOME", home_.c_str(), 1);
    std::filesystem::remove(customImage());
}

SettingsRig::~SettingsRig() {
    application_.reset();
    if (const auto pid = overlayPid()) {
        kill(*pid, SIGTERM);
        EXPECT_TRUE(overlayGoes());
    }
    std::filesystem::remove(customImage());
    std::filesystem::remove_all(home_);
}

bool SettingsRig::becomesTrue(const std::function<bool()>& condition) {
    const rig::Deadline deadline(kPatience);
    while (!condition()) {
        if (deadline.passed()) return false;
        rig::waitReadable({}, rig::Deadline(std::chrono::milliseconds(10)));
    }
    return true;
}

void SettingsRig::open() {
    open(SKAVLO_EXECUTABLE);
}

void SettingsRig::open(const std::string& executable, const std::vector<std::string>& environment) {
    ASSERT_NO_FATAL_FAILURE(startServer({.sizes = {kDesktop}}));
    ASSERT_NO_FATAL_FAILURE(startCompositor());
    launch(executable, environment);
}

void SettingsRig::launch(const std::string& executable,
                         const std::vector<std::string>& environment) {
    auto application =
        rig::SettingsApplication::start(*server_, display(), executable, environment);
    ASSERT_TRUE(application) << application.error().message;
    application_.emplace(std::move(*application));
}

void SettingsRig::close() {
    application().process().signal(SIGTERM);
    EXPECT_TRUE(application().process().wait(rig::Deadline(kPatience)));
    application_.reset();
}

rig::AccessibleItem SettingsRig::item(const std::string& role, const std::string& name) {
    const auto found = application().waitFor(role, name, rig::Deadline(kPatience));
    EXPECT_TRUE(found) << "there is no " << role << " \"" << name << '"';
    return found.value_or(rig::AccessibleItem{});
}

void SettingsRig::click(const std::string& role, const std::string& name) {
    EXPECT_TRUE(application().click(role, name, rig::Deadline(kPatience)))
        << role << " \"" << name << "\" cannot be clicked";
}

bool SettingsRig::goes(const std::string& role, const std::string& name) {
    return becomesTrue([&] {
        const auto found = application().tree().find(role, name);
        return !found || !found->showing;
    });
}

bool SettingsRig::switchBecomes(const std::string& name, bool on) {
    return becomesTrue([&] {
        const auto found = application().tree().find(rig::kSwitchRole, name);
        return found && found->checked == on;
    });
}

std::string SettingsRig::customImage() {
    return SKAVLO_LIBRARY_PREFIX "Caches/com.oxbrel.skavlo.custom_image.png";
}

PropertyDictionary SettingsRig::settings() {
    return PlistPropertyLists()
        .parse(contents(settingsFile()).value_or(""))
        .value_or(PropertyDictionary{});
}

bool SettingsRig::settingBecomes(const std::string& key, const PropertyValue& value) {
    return becomesTrue([&] {
        const PropertyDictionary now = settings();
        const PropertyValue* found = lookUp(now, key.c_str());
        return found && *found == value;
    });
}

std::optional<pid_t> SettingsRig::overlayPid() {
    const auto text = contents(pidFile());
    const pid_t pid = text ? std::atoi(text->c_str()) : 0;
    return pid > 0 && kill(pid, 0) == 0 ? std::optional(pid) : std::nullopt;
}

bool SettingsRig::overlayComes() {
    return becomesTrue([this] { return overlayPid() && overlayWindow() != XCB_NONE; });
}

bool SettingsRig::overlayGoes() {
    return becomesTrue([] { return overlayProcesses() == 0; });
}

bool SettingsRig::probesPass(int count) {
    const rig::FileDescriptor watch(inotify_init1(IN_CLOEXEC));
    const std::string directory = std::filesystem::path(pidFile()).parent_path();
    if (inotify_add_watch(watch.get(), directory.c_str(), IN_CLOSE_NOWRITE) < 0) return false;
    const rig::Deadline deadline(kPatience);
    while (count > 0 && rig::waitReadable({watch.get()}, deadline)) {
        alignas(inotify_event) std::array<char, 4096> events{};
        const ssize_t length = read(watch.get(), events.data(), events.size());
        for (ssize_t at = 0; at < length;) {
            const auto* event = reinterpret_cast<const inotify_event*>(events.data() + at);
            if (event->len > 0 && pidFile().ends_with(event->name)) --count;
            at += static_cast<ssize_t>(sizeof *event + event->len);
        }
    }
    return count <= 0;
}

int SettingsRig::overlayProcesses() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "cmdline", std::ios::binary);
        std::string program;
        std::string role;
        if (std::getline(file, program, '\0') && std::getline(file, role, '\0') && role == "-hud" &&
            program == SKAVLO_EXECUTABLE) {
            ++count;
        }
    }
    return count;
}

}  // namespace skavlo
