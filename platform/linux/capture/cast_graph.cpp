#include "platform/linux/capture/cast_graph.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace skavlo {

namespace {

constexpr std::array<std::string_view, 4> kShells{"gnome-shell", "plasmashell", "kwin_wayland",
                                                  "phosh"};
constexpr std::string_view kPortals = "xdg-desktop-portal";  // and its back ends

bool isDesktopProgram(std::string_view program) {
    return std::find(kShells.begin(), kShells.end(), program) != kShells.end() ||
           program.starts_with(kPortals);
}

}  // namespace

bool CastGraph::canCast(const std::string& mediaClass) {
    return mediaClass == "Stream/Output/Video" || mediaClass == "Video/Source";
}

void CastGraph::setNode(Id id, CastNode node) {
    nodes_[id] = std::move(node);
}

void CastGraph::announceClient(Id id) {
    clients_.try_emplace(id);
}

void CastGraph::setClient(Id id, std::string program) {
    clients_[id] = std::move(program);
}

void CastGraph::setLink(Id id, Id outputNode, Id inputNode) {
    links_[id] = {outputNode, inputNode};
}

void CastGraph::remove(Id id) {
    nodes_.erase(id);
    clients_.erase(id);
    links_.erase(id);
}

void CastGraph::clear() {
    nodes_.clear();
    clients_.clear();
    links_.clear();
}

bool CastGraph::casting() const {
    return std::any_of(nodes_.begin(), nodes_.end(), [this](const auto& entry) {
        const auto& [id, node] = entry;
        return node.running && !node.device && canCast(node.mediaClass) &&
               node.mediaRole != "Camera" && isReceived(id);
    });
}

bool CastGraph::isReceived(Id node) const {
    return std::any_of(links_.begin(), links_.end(), [this, node](const auto& entry) {
        const Link& link = entry.second;
        return link.outputNode == node && isRecorder(link.inputNode);
    });
}

// Who is not known at all is one.
bool CastGraph::isRecorder(Id node) const {
    const auto found = nodes_.find(node);
    if (found == nodes_.end()) return true;
    const auto client = clients_.find(found->second.client);
    if (client == clients_.end()) return true;
    return client->second && !isDesktopProgram(*client->second);
}

}  // namespace skavlo
