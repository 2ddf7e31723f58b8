#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace skavlo {

// What matters of a node in PipeWire's graph.
struct CastNode {
    std::string mediaClass = {};
    std::string mediaRole = {};
    std::uint32_t client = 0;  // whose node it is
    bool device = false;       // stands for hardware
    bool running = false;
};

// PipeWire's graph as far as it says whether somebody receives a cast of the screen.
class CastGraph {
  public:
    using Id = std::uint32_t;  // PipeWire's, one space for everything

    void setNode(Id id, CastNode node);
    // A client of which more is about to be told; until then nothing is made of it.
    void announceClient(Id id);
    // The file name of the program behind a client; empty: it does not say.
    void setClient(Id id, std::string program);
    void setLink(Id id, Id outputNode, Id inputNode);
    void remove(Id id);
    void clear();

    // A stream of pictures that is no camera's runs and somebody receives it who is not the
    // desktop: shells and the portals' pickers show small moving pictures of windows and screens.
    [[nodiscard]] bool casting() const;

    // Whether nodes of this class can be a cast, so that their state is worth following.
    [[nodiscard]] static bool canCast(const std::string& mediaClass);

  private:
    struct Link {
        Id outputNode;
        Id inputNode;
    };
    [[nodiscard]] bool isReceived(Id node) const;
    [[nodiscard]] bool isRecorder(Id node) const;

    std::map<Id, CastNode> nodes_;
    std::map<Id, std::optional<std::string>> clients_;
    std::map<Id, Link> links_;
};

}  // namespace skavlo
