#include "platform/hid.h"

namespace skavlo {

std::int64_t HidEvent::integerValue(HidField field) const {
    switch (field) {
        case kHidFieldDigitizerIndex:
            return index;
        case kHidFieldDigitizerIdentity:
            return identity;
        case kHidFieldDigitizerTouch:
            return touch;
        default:
            return 0;
    }
}

double HidEvent::floatValue(HidField field) const {
    switch (field) {
        case kHidFieldDigitizerX:
            return x;
        case kHidFieldDigitizerY:
            return y;
        default:
            return 0;
    }
}

}  // namespace skavlo
