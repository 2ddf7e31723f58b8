// Input devices that only udev, libinput and this process believe in.
#pragma once

#include <linux/input.h>
#include <umockdev.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/time.h"

namespace skavlo::test {

struct MockAxis {
    int minimum = 0;
    int maximum = 0;
    int resolution = 0;  // units per millimetre
};

struct MockDescription {
    std::string name;
    int number = 1;                       // of /dev/input/eventN
    std::vector<std::string> properties;  // udev's, "ID_INPUT_TOUCHSCREEN=1"
    std::vector<int> keys;
    std::vector<int> inputProperties;
    std::map<int, MockAxis> axes;
};

// A touchscreen of 1000 x 500 units with this many slots; a pen display of 2000 x 1000 units; a
// keyboard.
MockDescription touchscreen(int number, int slots = 10);
MockDescription pen(int number);
MockDescription keyboard(int number);

class MockBed;

// Answers the evdev ioctls of one device and writes its events.
class MockDevice {
  public:
    MockDevice(MockBed& bed, MockDescription description);
    ~MockDevice();  // unplugs it
    MockDevice(const MockDevice&) = delete;
    MockDevice& operator=(const MockDevice&) = delete;

    void event(int type, int code, int value);
    // A whole frame goes out with this.
    MachTime sync();

    // Multi-touch, protocol B.
    void down(int slot, int x, int y);
    void move(int slot, int x, int y);
    void up(int slot);

    // What the kernel says a slot holds when asked, after it threw events away.
    void setSlotState(int slot, int trackingId, int x, int y);

    // Whether anybody asked it anything: nobody does without opening it.
    [[nodiscard]] bool wasOpened();

    gboolean answer(UMockdevIoctlClient* client);

  private:
    struct Slot {
        int trackingId = -1;
        int x = 0;
        int y = 0;
    };

    void writeFrame();
    [[nodiscard]] int readable() const;
    bool fill(unsigned number, std::vector<std::uint8_t>& data);
    void fillBits(int type, std::vector<std::uint8_t>& bits) const;
    void fillSlots(std::vector<std::uint8_t>& data) const;

    MockBed& bed_;
    MockDescription description_;
    std::string node_;
    std::string path_;
    UMockdevIoctlBase* handler_ = nullptr;
    int terminal_ = -1;  // what libinput reads
    std::vector<input_event> frame_;
    int nextTrackingId_ = 1;
    std::mutex mutex_;  // ioctls are answered on the bed's own thread
    std::vector<Slot> slots_;
    bool opened_ = false;
};

// What umockdev-record saw of a device of a real kernel, /dev/input/event1: its description, its
// answers and its events, in the files PATH.umockdev, .ioctl and .events.
class RecordedDevice {
  public:
    RecordedDevice(MockBed& bed, std::string path);
    // Its events come as they came then, at the same intervals.
    void play();

  private:
    MockBed& bed_;
    std::string path_;
};

class MockBed {
  public:
    MockBed() : bed_(umockdev_testbed_new()) {}
    ~MockBed() { g_object_unref(bed_); }
    MockBed(const MockBed&) = delete;
    MockBed& operator=(const MockBed&) = delete;
    [[nodiscard]] UMockdevTestbed* get() const { return bed_; }

  private:
    UMockdevTestbed* bed_;
};

}  // namespace skavlo::test
