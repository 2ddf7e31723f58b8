#include "tools/replay/contact_check.h"

#include <array>
#include <charconv>
#include <set>

namespace skavlo {

namespace {

// As recordings have it: milliseconds with at most three decimals.
std::string milliseconds(MachTime time) {
    constexpr double kNanosecondsPerMillisecond = 1e6;
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                   static_cast<double>(time) / kNanosecondsPerMillisecond);
    return {digits.data(), end.ptr};
}

}  // namespace

std::vector<std::string> contactOddities(const TouchRecording& recording) {
    std::vector<std::string> oddities;
    std::set<int> touching;
    for (const RecordedFrame& frame : recording.frames) {
        for (const RecordedTouch& touch : frame.touches) {
            const bool lifts = touch.phase == TouchPhase::kUp;
            const bool wasTouching =
                lifts ? touching.erase(touch.contact) > 0 : !touching.insert(touch.contact).second;
            if (wasTouching != (touch.phase == TouchPhase::kDown)) continue;
            const char* what = wasTouching ? "touches twice and begins anew"
                               : lifts     ? "lifts without touching, which nothing comes of"
                                           : "moves without touching and begins there";
            oddities.push_back("at " + milliseconds(frame.time) + " ms contact " +
                               std::to_string(touch.contact) + " " + what);
        }
    }
    return oddities;
}

}  // namespace skavlo
