// A PipeWire server of its own, which belongs to an ordinary user as in a session.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/capture/pipewire_source.h"
#include "tests/unit/capture/loop_fixture.h"
#include "tools/rig/child.h"

namespace skavlo {

class CastRig : public LoopFixture {
  protected:
    void SetUp() override;
    void TearDown() override;

    // As the ordinary user when this is root, with the session's variables. What it says goes to
    // a file in the directory.
    rig::Child startInSession(const std::vector<std::string>& arguments);
    // Like it; then waits for the number that the program prints first.
    std::pair<rig::Child, std::string> startAndRead(const std::vector<std::string>& arguments);
    // Waits until the file is there.
    void waitForFile(const std::filesystem::path& path);
    void startBus();
    void startServer();          // PipeWire
    void startSessionManager();  // which links consumers to what they want

    void openSource();
    bool waitFor(bool captures) {
        return runUntil([&] { return source->captures() == captures; });
    }

    [[nodiscard]] std::string socketPath() const { return directory / "pipewire-0"; }

    std::filesystem::path directory;
    std::optional<rig::Child> bus;
    std::optional<rig::Child> server;
    std::optional<rig::Child> sessionManager;
    std::unique_ptr<PipeWireSource> source;
};

}  // namespace skavlo
