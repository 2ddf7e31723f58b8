// Recorded touches, as read from a file.
//
// Our own format is plain text. '#' begins a comment; empty lines mean nothing. The first line with
// something on it gives the size of the screen in points, every other one an event:
//
//     screen 1280 720
//     0      1 320 200.5 down     time in milliseconds, contact, x, y, down or move or up
//     16.667 1 330 201   move
//     33.333 1 330 201   up
//
// Times never go back; neighbouring lines of equal time form one frame. Contacts are numbers from 0
// on, which may be used again. The order of a contact's events is not checked: recordings may show
// how touch hardware misbehaves.
//
// The files that evemu-record writes are read as well, told apart by their contents.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/geometry.h"
#include "platform/result.h"
#include "platform/time.h"

namespace skavlo {

enum class TouchPhase { kDown, kMove, kUp };

struct RecordedTouch {
    int contact = 0;
    Point point;  // in points of the recording's screen
    TouchPhase phase = TouchPhase::kMove;
    bool operator==(const RecordedTouch&) const = default;
};

struct RecordedFrame {
    MachTime time = 0;  // since the recording's beginning
    std::vector<RecordedTouch> touches;
    bool operator==(const RecordedFrame&) const = default;
};

struct TouchRecording {
    Size screen;
    std::vector<RecordedFrame> frames;
};

// `name` stands before the line number in the errors: "NAME:LINE: message".
Result<TouchRecording> parseRecording(std::string_view text, const std::string& name);

// A regular file of at most 64 MiB.
Result<TouchRecording> readRecording(const std::string& path);

}  // namespace skavlo
