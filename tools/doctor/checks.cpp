#include "tools/doctor/checks.h"

namespace skavlo::doctor {

const std::vector<Check>& allChecks() {
    static const std::vector<Check> kChecks{checkDisplay, checkTouches, checkFolders, checkHelper,
                                            checkCapture, checkFonts,   checkImages};
    return kChecks;
}

}  // namespace skavlo::doctor
