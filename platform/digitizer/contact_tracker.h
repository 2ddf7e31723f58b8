// Turns what touch devices report into digitizer events.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "platform/geometry.h"
#include "platform/hid.h"

namespace skavlo {

struct ContactKey {
    std::uint32_t device = 0;  // unique among the devices that are present
    std::int32_t contact = 0;  // slot or touch id, unique within the device while it touches
    bool operator==(const ContactKey&) const = default;
};

// Every contact has an index, the smallest of 1 to 20 that is free (21 when all are taken), and an
// identity above every index, unique for its lifetime. Every event carries all contacts of all
// devices, so that a lost report strands nothing, and those that ended since the last event.
class ContactTracker {
  public:
    using Sink = std::function<void(const HidEvent& parent)>;
    using ScreenSize = std::function<Size()>;  // in points

    ContactTracker(ScreenSize screenSize, Sink sink);

    // Down of a key that already touches ends the old contact first; motion of a key that does not
    // touch begins it (its down was lost); up of one that does not touch is ignored.
    void down(ContactKey key, Point points);
    void motion(ContactKey key, Point points);
    void up(ContactKey key);
    // Ends what the device's frame began: delivers one event if anything changed since the last.
    void frame(MachTime time);

    // The device went away or its contacts were cancelled: ends them and delivers.
    void endDevice(std::uint32_t device, MachTime time);
    void endAll(MachTime time);

    [[nodiscard]] std::size_t touching() const;

  private:
    struct Contact {
        ContactKey key;
        std::int64_t index;
        std::int64_t identity;
        Point points;
        bool touching;
        bool reported;  // an event has shown it touching
    };

    Contact* find(ContactKey key);
    [[nodiscard]] std::int64_t smallestFreeIndex() const;
    void appendChild(const Contact& contact, bool touching, Size screen);

    ScreenSize screenSize_;
    Sink sink_;
    std::vector<Contact> contacts_;
    std::int64_t nextIdentity_;
    bool changed_ = false;
    HidEvent parent_;  // kept, so that an event allocates nothing
};

}  // namespace skavlo
