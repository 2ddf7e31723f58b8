// What every role of the real executable leaves in its environment for who draws.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

#include "tests/e2e/overlay/environment_witness.h"
#include "tests/e2e/overlay/overlay_rig.h"

namespace skavlo {
namespace {

using testing::HasSubstr;
using testing::Not;

struct RoleCase {
    const char* name;
    const char* argument;  // empty: none
    const char* module;    // that it loads; null: none
};
void PrintTo(const RoleCase& role, std::ostream* out) {
    *out << role.name;
}

class Renderer : public OverlayFiles, public testing::WithParamInterface<RoleCase> {
  protected:
    // Runs the role, which finds no display, to its end. `before`: the variable as NAME=VALUE, or
    // NAME to take it away.
    static std::string testimony(const std::string& before) {
        std::vector<std::string> arguments{SKAVLO_EXECUTABLE};
        if (*GetParam().argument) arguments.emplace_back(GetParam().argument);
        const rig::FileDescriptor output(memfd_create("testimony", MFD_CLOEXEC));
        auto child = rig::Child::start({arguments,
                                        {"LD_PRELOAD=" SKAVLO_ENVIRONMENT_WITNESS,
                                         // Where the sanitizers' library would come first.
                                         "ASAN_OPTIONS=verify_asan_link_order=0", before, "DISPLAY",
                                         "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"},
                                        {},
                                        output.get()});
        EXPECT_TRUE(child) << child.error().message;
        const auto status = child->wait(rig::Deadline(std::chrono::seconds(20)));
        EXPECT_TRUE(status && WIFEXITED(*status)) << "it did not end by itself";
        std::string text;
        std::array<char, 4096> part{};
        lseek(output.get(), 0, SEEK_SET);
        for (ssize_t length; (length = read(output.get(), part.data(), part.size())) > 0;) {
            text.append(part.data(), static_cast<std::size_t>(length));
        }
        return text;
    }
};

TEST_P(Renderer, IsTheSoftwareOneFromTheBeginningWhateverItWasBefore) {
    const std::string variable = kWitnessedVariable;
    for (const std::string& before : {variable, variable + "=0", variable + "="}) {
        const std::string said = testimony(before);
        if (const char* module = GetParam().module) {
            EXPECT_THAT(said, HasSubstr(std::string(module) + ": 1\n")) << before;
        }
        EXPECT_THAT(said, HasSubstr(std::string(kWitnessedEnd) + ": 1\n")) << before;
        for (const char* other : {": 0\n", ": (none)\n", ": \n"}) {
            EXPECT_THAT(said, Not(HasSubstr(other))) << before;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, Renderer,
                         testing::Values(RoleCase{"Overlay", "-hud", "skavlo-hud.so"},
                                         RoleCase{"Probe", "-check", nullptr},
                                         RoleCase{"Exit", "-exit", nullptr},
                                         RoleCase{"Settings", "", "skavlo-ui.so"},
                                         RoleCase{"SettingsWithAnArgument", "x", "skavlo-ui.so"}),
                         [](const auto& suite) { return std::string(suite.param.name); });

}  // namespace
}  // namespace skavlo
