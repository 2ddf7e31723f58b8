#pragma once

#include <string>

namespace skavlo::test {

// A touchscreen of ten slots, 1920 by 1080 units, made by the kernel's uinput. Ends the process
// when the kernel refuses.
class UinputTouchscreen {
  public:
    static constexpr int kWidth = 1920;
    static constexpr int kHeight = 1080;
    static constexpr const char* kName = "test touchscreen";

    UinputTouchscreen();
    ~UinputTouchscreen();  // unplugs it
    UinputTouchscreen(const UinputTouchscreen&) = delete;
    UinputTouchscreen& operator=(const UinputTouchscreen&) = delete;

    // "/dev/input/event1".
    [[nodiscard]] std::string node() const;

    void down(int slot, int x, int y);
    void move(int slot, int x, int y);
    void up(int slot);
    void sync();

  private:
    void axis(int code, int maximum, int resolution);
    void event(int type, int code, int value);

    int descriptor_;
    int touching_ = 0;
    int nextTrackingId_ = 1;
};

}  // namespace skavlo::test
