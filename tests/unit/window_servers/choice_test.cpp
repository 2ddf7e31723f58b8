// Which window server is used, and which compositors need more than that.
#include "platform/linux/window_servers/choice.h"

#include <gtest/gtest.h>

#include <string>

namespace skavlo {
namespace {

struct ChoiceCase {
    DesktopFacts facts;
    WindowServerKind kind;
};

TEST(WindowServerChoice, EveryCombinationHasOne) {
    using enum WindowServerKind;
    const ChoiceCase cases[] = {
        {{.compositor = true, .layerShell = true, .xServer = true}, wayland},
        {{.compositor = true, .layerShell = true, .xServer = false}, wayland},
        {{.compositor = true, .layerShell = false, .xServer = true}, x11},
        {{.compositor = true, .layerShell = false, .xServer = false}, none},
        {{.compositor = false, .layerShell = false, .xServer = true}, x11},
        {{.compositor = false, .layerShell = false, .xServer = false}, none},
    };
    for (const ChoiceCase& one : cases) {
        const WindowServerChoice choice = chooseWindowServer(one.facts);
        EXPECT_EQ(choice.kind, one.kind) << choice.reason;
        EXPECT_FALSE(std::string(choice.reason).empty());
    }
}

TEST(InputShapes, AreForgottenByMutterBefore44Point2) {
    for (const char* version :
         {"3.38.6", "42.0", "43.8", "44", "44.rc", "44.0", "44.1", "unknown"}) {
        EXPECT_TRUE(forgetsInputShapes(version)) << version;
    }
    for (const char* version : {"", "44.2", "44.10", "45.alpha", "45.0", "48.1"}) {
        EXPECT_FALSE(forgetsInputShapes(version)) << version;
    }
}

}  // namespace
}  // namespace skavlo
