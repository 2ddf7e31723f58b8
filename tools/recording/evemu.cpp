#include "tools/recording/evemu.h"

#include <array>
#include <cmath>
#include <optional>
#include <vector>

#include "tools/recording/lines.h"

namespace skavlo {

namespace {

// From the kernel's list of input event codes.
constexpr int kTypeSyn = 0x00;
constexpr int kTypeAbs = 0x03;
constexpr int kSynReport = 0;
constexpr int kSynDropped = 3;
constexpr int kAbsMtSlot = 0x2f;
constexpr int kAbsMtPositionX = 0x35;
constexpr int kAbsMtPositionY = 0x36;
constexpr int kAbsMtTrackingId = 0x39;

constexpr int kSlots = 64;  // more than any device has

constexpr double kMicrosecondsPerSecond = 1e6;
constexpr double kLongestSeconds = 1e10;  // keeps the times within their type

struct Axis {
    int minimum = 0;
    int maximum = 0;
};

struct Event {
    MachTime time = 0;
    int type = 0;
    int code = 0;
    int value = 0;
};

// Follows the slots of a device from event to event.
class SlotReader {
  public:
    // What is missing in the device's description; null: nothing.
    [[nodiscard]] const char* missing() const;
    void setAxis(int code, Axis axis);
    // What is wrong with the event; null: nothing.
    const char* take(const Event& event);
    [[nodiscard]] TouchRecording finish();

  private:
    struct Slot {
        Point point;
        bool touching = false;
        bool began = false;  // within this frame, and not yet in it
        bool moved = false;
    };

    const char* takeAbsolute(const Event& event);
    void takeTrackingId(int value);
    void setPosition(double& coordinate, int value, int minimum);
    void flush(int index);
    void end(int index);
    void endFrame(MachTime time);

    std::optional<Axis> x_;
    std::optional<Axis> y_;
    std::array<Slot, kSlots> slots_;
    int current_ = 0;
    bool dropping_ = false;
    RecordedFrame frame_;
    TouchRecording recording_;
};

const char* SlotReader::missing() const {
    if (!x_) {
        return "the device has no horizontal touch axis (A: 35)";
    }
    return y_ ? nullptr : "the device has no vertical touch axis (A: 36)";
}

void SlotReader::setAxis(int code, Axis axis) {
    if (code == kAbsMtPositionX) {
        x_ = axis;
    } else if (code == kAbsMtPositionY) {
        y_ = axis;
    }
}

const char* SlotReader::take(const Event& event) {
    if (event.type == kTypeSyn && event.code == kSynDropped) {
        for (int index = 0; index < kSlots; ++index) {
            end(index);
        }
        dropping_ = true;
    } else if (event.type == kTypeSyn && event.code == kSynReport) {
        dropping_ = false;
        endFrame(event.time);
    } else if (event.type == kTypeAbs && !dropping_) {
        return takeAbsolute(event);
    }
    return nullptr;
}

TouchRecording SlotReader::finish() {
    recording_.screen = {static_cast<double>(x_->maximum) - x_->minimum + 1,
                         static_cast<double>(y_->maximum) - y_->minimum + 1};
    return std::move(recording_);
}

const char* SlotReader::takeAbsolute(const Event& event) {
    Slot& slot = slots_[static_cast<std::size_t>(current_)];
    switch (event.code) {
        case kAbsMtSlot:
            if (event.value < 0 || event.value >= kSlots) {
                return "no such slot";
            }
            current_ = event.value;
            break;
        case kAbsMtTrackingId:
            takeTrackingId(event.value);
            break;
        case kAbsMtPositionX:
            setPosition(slot.point.x, event.value, x_->minimum);
            break;
        case kAbsMtPositionY:
            setPosition(slot.point.y, event.value, y_->minimum);
            break;
        default:
            break;
    }
    return nullptr;
}

void SlotReader::takeTrackingId(int value) {
    end(current_);  // a new id without an end in between replaces the old contact
    if (value >= 0) {
        Slot& slot = slots_[static_cast<std::size_t>(current_)];
        slot.touching = true;
        slot.began = true;
    }
}

void SlotReader::setPosition(double& coordinate, int value, int minimum) {
    Slot& slot = slots_[static_cast<std::size_t>(current_)];
    slot.began = slot.began || !slot.touching;
    slot.touching = true;
    slot.moved = true;
    coordinate = static_cast<double>(value) - minimum;
}

void SlotReader::flush(int index) {
    Slot& slot = slots_[static_cast<std::size_t>(index)];
    if (slot.began || (slot.touching && slot.moved)) {
        frame_.touches.push_back(
            {index, slot.point, slot.began ? TouchPhase::kDown : TouchPhase::kMove});
    }
    slot.began = false;
    slot.moved = false;
}

void SlotReader::end(int index) {
    flush(index);
    Slot& slot = slots_[static_cast<std::size_t>(index)];
    if (slot.touching) {
        frame_.touches.push_back({index, slot.point, TouchPhase::kUp});
    }
    slot.touching = false;
}

void SlotReader::endFrame(MachTime time) {
    for (int index = 0; index < kSlots; ++index) {
        flush(index);
    }
    if (!frame_.touches.empty()) {
        frame_.time = time;
        recording_.frames.push_back(std::move(frame_));
    }
    frame_ = {};
}

// "A: CODE MINIMUM MAXIMUM FUZZ FLAT [RESOLUTION]", the code in hexadecimal digits. False: not one.
bool readAxis(const std::vector<std::string_view>& parts, SlotReader& reader) {
    const auto code = parts.size() < 4 ? std::nullopt : integerNumber(parts[1], 16);
    const auto minimum = code ? integerNumber(parts[2]) : std::nullopt;
    const auto maximum = minimum ? integerNumber(parts[3]) : std::nullopt;
    if (!maximum || *maximum < *minimum) {
        return false;
    }
    reader.setAxis(*code, {*minimum, *maximum});
    return true;
}

// "E: SECONDS TYPE CODE VALUE", type and code in hexadecimal digits.
std::optional<Event> readEvent(const std::vector<std::string_view>& parts) {
    if (parts.size() != 5) {
        return std::nullopt;
    }
    const auto seconds = finiteNumber(parts[1]);
    const auto type = integerNumber(parts[2], 16);
    const auto code = integerNumber(parts[3], 16);
    const auto value = integerNumber(parts[4]);
    if (!seconds || *seconds < 0 || *seconds > kLongestSeconds || !type || !code || !value) {
        return std::nullopt;
    }
    const auto microseconds =
        static_cast<MachTime>(std::llround(*seconds * kMicrosecondsPerSecond));
    return Event{microseconds * 1000, *type, *code, *value};
}

// Hands one line to the reader. What is wrong with it; null: nothing.
const char* readLine(const std::vector<std::string_view>& parts, SlotReader& reader,
                     std::optional<MachTime>& beginning) {
    if (parts.empty()) {
        return nullptr;
    }
    if (parts[0] == "A:") {
        return readAxis(parts, reader) ? nullptr : "expected: A: CODE MINIMUM MAXIMUM FUZZ FLAT";
    }
    if (parts[0] != "E:") {
        return nullptr;  // the device's name and abilities
    }
    auto event = readEvent(parts);
    if (!event) {
        return "expected: E: SECONDS TYPE CODE VALUE";
    }
    if (const char* missing = reader.missing()) {
        return missing;
    }
    beginning = beginning.value_or(event->time);
    if (event->time < *beginning) {
        return "time goes back";
    }
    event->time -= *beginning;
    return reader.take(*event);
}

}  // namespace

bool isEvemuRecording(std::string_view text) {
    while (!text.empty()) {
        const std::string_view line = takeLine(text);
        const auto parts = words(line);
        if (line.substr(0, 7) == "# EVEMU") {
            return true;
        }
        if (!parts.empty()) {
            return parts[0].size() == 2 && parts[0][1] == ':';
        }
    }
    return false;
}

Result<TouchRecording> parseEvemuRecording(std::string_view text, const std::string& name) {
    SlotReader reader;
    std::optional<MachTime> beginning;
    int number = 0;
    while (!text.empty()) {
        ++number;
        if (const char* wrong = readLine(words(takeLine(text)), reader, beginning)) {
            return lineError(name, number, wrong);
        }
    }
    if (const char* missing = reader.missing()) {
        return lineError(name, number, missing);
    }
    return reader.finish();
}

}  // namespace skavlo
