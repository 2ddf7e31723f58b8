#include <sys/stat.h>
#include <unistd.h>

#include <optional>
#include <string>

#include "tools/doctor/checks.h"

namespace skavlo::doctor {

namespace {

constexpr mode_t kPersonaMode = 04750;
constexpr mode_t kPermissions = 07777;

std::optional<struct stat> statusOf(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

Text reinstall() {
    return {"重新安装 Skavlo 软件包", "install the Skavlo package again"};
}

Finding folder(const std::string& path) {
    const auto status = statusOf(path);
    if (!status || !S_ISDIR(status->st_mode)) {
        return {"folder",
                Level::fail,
                {"没有文件夹 " + path, "there is no folder " + path},
                {"运行 systemd-tmpfiles --create，或 mkdir -p " + path,
                 "run systemd-tmpfiles --create, or mkdir -p " + path}};
    }
    if ((status->st_mode & S_IWOTH) != 0) {
        return {"folder",
                Level::fail,
                {"任何人都能改动 " + path, "everybody may change " + path},
                {"chmod o-w " + path, "chmod o-w " + path}};
    }
    if (access(path.c_str(), W_OK | X_OK) != 0) {
        return {"folder",
                Level::warn,
                {"你不能写入 " + path, "you may not write to " + path},
                {"加入 mobile 组后重新登录：sudo adduser $USER mobile",
                 "join the group mobile and log in again: sudo adduser $USER mobile"}};
    }
    return {"folder", Level::ok, {path + " 可写", path + " can be written to"}};
}

bool isAsItShouldBe(const struct stat& status, const Surroundings& surroundings) {
    return S_ISREG(status.st_mode) && (status.st_mode & kPermissions) == kPersonaMode &&
           status.st_uid == surroundings.root && status.st_gid == surroundings.mobileGroup;
}

}  // namespace

Findings checkFolders(const Surroundings& surroundings) {
    return {folder(surroundings.caches()), folder(surroundings.notify())};
}

Findings checkHelper(const Surroundings& surroundings) {
    const std::string path = surroundings.persona();
    if (surroundings.user == 0) {
        return {{"helper", Level::ok, {"你是 root，不需要助手", "you are root: no helper needed"}}};
    }
    const auto status = statusOf(path);
    if (!status) {
        return {{"helper",
                 Level::warn,
                 {"没有 " + path + "，覆盖层以你的权限运行",
                  "there is no " + path + ": the overlay runs with your rights"},
                 {"若要直接读取触摸屏，请安装 Skavlo 软件包",
                  "install the Skavlo package to have touchscreens read directly"}}};
    }
    if (!isAsItShouldBe(*status, surroundings)) {
        return {{"helper",
                 Level::fail,
                 {path + " 的所有者或权限不是 root:mobile 4750",
                  path + " does not have owner and mode root:mobile 4750"},
                 reinstall()}};
    }
    if (access(path.c_str(), X_OK) != 0) {
        return {{"helper",
                 Level::warn,
                 {"你不能运行 " + path, "you may not run " + path},
                 {"加入 mobile 组后重新登录：sudo adduser $USER mobile",
                  "join the group mobile and log in again: sudo adduser $USER mobile"}}};
    }
    return {{"helper", Level::ok, {"覆盖层以 root 运行", "the overlay runs as root"}}};
}

bool overlayIsRoot(const Surroundings& surroundings) {
    const auto status = statusOf(surroundings.persona());
    return surroundings.user == 0 || (status && isAsItShouldBe(*status, surroundings) &&
                                      access(surroundings.persona().c_str(), X_OK) == 0);
}

}  // namespace skavlo::doctor
