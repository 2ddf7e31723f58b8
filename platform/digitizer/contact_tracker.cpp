#include "platform/digitizer/contact_tracker.h"

#include <algorithm>
#include <utility>

#include "platform/digitizer/coordinates.h"

namespace skavlo {

namespace {
constexpr std::int64_t kLargestIndex = 20;
constexpr std::int64_t kFirstIdentity = 1000;
constexpr std::int64_t kLastIdentity = 0x7fffffff;  // readers keep 32 bits
}  // namespace

ContactTracker::ContactTracker(ScreenSize screenSize, Sink sink)
    : screenSize_(std::move(screenSize)), sink_(std::move(sink)), nextIdentity_(kFirstIdentity) {
    parent_.type = kHidEventTypeDigitizer;
}

ContactTracker::Contact* ContactTracker::find(ContactKey key) {
    const auto it = std::find_if(contacts_.begin(), contacts_.end(),
                                 [&](const Contact& c) { return c.touching && c.key == key; });
    return it == contacts_.end() ? nullptr : &*it;
}

std::int64_t ContactTracker::smallestFreeIndex() const {
    for (std::int64_t index = 1; index <= kLargestIndex; ++index) {
        const bool taken = std::any_of(contacts_.begin(), contacts_.end(),
                                       [&](const Contact& c) { return c.index == index; });
        if (!taken) return index;
    }
    return kLargestIndex + 1;
}

void ContactTracker::down(ContactKey key, Point points) {
    up(key);
    contacts_.push_back({key, smallestFreeIndex(), nextIdentity_, points, true, false});
    nextIdentity_ = nextIdentity_ == kLastIdentity ? kFirstIdentity : nextIdentity_ + 1;
    changed_ = true;
}

void ContactTracker::motion(ContactKey key, Point points) {
    Contact* contact = find(key);
    if (!contact) {
        down(key, points);
        return;
    }
    contact->points = points;
    changed_ = true;
}

void ContactTracker::up(ContactKey key) {
    if (Contact* contact = find(key)) {
        contact->touching = false;
        changed_ = true;
    }
}

void ContactTracker::appendChild(const Contact& contact, bool touching, Size screen) {
    HidEvent& child = parent_.children.emplace_back();
    const Point place = digitizerCoordinates(contact.points, screen);
    child.type = kHidEventTypeDigitizer;
    child.timeStamp = parent_.timeStamp;
    child.x = place.x;
    child.y = place.y;
    child.index = contact.index;
    child.identity = contact.identity;
    child.touch = touching ? 1 : 0;
}

void ContactTracker::frame(MachTime time) {
    if (!changed_) return;
    changed_ = false;
    const Size screen = screenSize_();
    parent_.timeStamp = time;
    parent_.touch = touching() > 0 ? 1 : 0;
    parent_.children.clear();
    for (Contact& contact : contacts_) {
        // One that came and went within a frame is shown touching and lifted.
        if (contact.touching || !contact.reported) appendChild(contact, true, screen);
        if (!contact.touching) appendChild(contact, false, screen);
        contact.reported = true;
    }
    // Only now is an index free again: within one event no two contacts share one.
    std::erase_if(contacts_, [](const Contact& c) { return !c.touching; });
    sink_(parent_);
}

void ContactTracker::endDevice(std::uint32_t device, MachTime time) {
    for (Contact& contact : contacts_) {
        if (contact.key.device != device || !contact.touching) continue;
        contact.touching = false;
        changed_ = true;
    }
    frame(time);
}

void ContactTracker::endAll(MachTime time) {
    for (Contact& contact : contacts_) {
        contact.touching = false;
        changed_ = true;
    }
    frame(time);
}

std::size_t ContactTracker::touching() const {
    return static_cast<std::size_t>(std::count_if(contacts_.begin(), contacts_.end(),
                                                  [](const Contact& c) { return c.touching; }));
}

}  // namespace skavlo
