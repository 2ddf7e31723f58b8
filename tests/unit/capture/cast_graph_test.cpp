#include "platform/linux/capture/cast_graph.h"

#include <gtest/gtest.h>

namespace skavlo {
namespace {

constexpr CastGraph::Id kStream = 40;
constexpr CastGraph::Id kViewer = 50;
constexpr CastGraph::Id kOther = 60;
constexpr CastGraph::Id kClients = 100;  // of node N: kClients + N
constexpr CastGraph::Id kLinks = 200;    // to node N: kLinks + N

class Casts : public testing::Test {
  protected:
    static CastNode stream() {
        CastNode node;
        node.mediaClass = "Stream/Output/Video";
        node.running = true;
        return node;
    }
    void addViewer(CastGraph::Id id, const std::string& program) {
        CastNode node;
        node.mediaClass = "Stream/Input/Video";
        node.client = kClients + id;
        graph.setNode(id, node);
        graph.setClient(node.client, program);
        graph.setLink(kLinks + id, kStream, id);
    }
    CastGraph graph;
};

TEST_F(Casts, AnEmptyGraphHasNone) {
    EXPECT_FALSE(graph.casting());
}

TEST_F(Casts, ARunningStreamThatARecorderReceivesIsOne) {
    graph.setNode(kStream, stream());
    EXPECT_FALSE(graph.casting());
    addViewer(kViewer, "obs");
    EXPECT_TRUE(graph.casting());
    graph.remove(kStream);
    EXPECT_FALSE(graph.casting());
}

TEST_F(Casts, ASourceOfPicturesThatIsNoDeviceIsOne) {
    addViewer(kViewer, "obs");
    CastNode node = stream();
    node.mediaClass = "Video/Source";
    graph.setNode(kStream, node);
    EXPECT_TRUE(graph.casting());
    node.device = true;
    graph.setNode(kStream, node);
    EXPECT_FALSE(graph.casting());
}

TEST_F(Casts, AStreamThatDoesNotRunIsNone) {
    addViewer(kViewer, "obs");
    CastNode node = stream();
    node.running = false;
    graph.setNode(kStream, node);
    EXPECT_FALSE(graph.casting());
}

TEST_F(Casts, CamerasAndSoundAreNone) {
    addViewer(kViewer, "obs");
    CastNode node = stream();
    node.mediaRole = "Camera";
    graph.setNode(kStream, node);
    EXPECT_FALSE(graph.casting());
    node = stream();
    node.mediaClass = "Stream/Output/Audio";
    graph.setNode(kStream, node);
    EXPECT_FALSE(graph.casting());
}

TEST_F(Casts, NothingIsMadeOfAViewerBeforeItIsKnown) {
    graph.setNode(kStream, stream());
    CastNode viewer;
    viewer.client = kClients + kViewer;
    graph.announceClient(viewer.client);
    graph.setNode(kViewer, viewer);
    graph.setLink(kLinks + kViewer, kStream, kViewer);
    EXPECT_FALSE(graph.casting());
    graph.setClient(viewer.client, "obs");
    EXPECT_TRUE(graph.casting());
    graph.announceClient(viewer.client);
    EXPECT_TRUE(graph.casting());
}

TEST_F(Casts, TheDesktopsOwnPreviewsAreNone) {
    for (const char* program :
         {"gnome-shell", "plasmashell", "kwin_wayland", "xdg-desktop-portal-kde"}) {
        graph.clear();
        graph.setNode(kStream, stream());
        addViewer(kViewer, program);
        EXPECT_FALSE(graph.casting()) << program;
    }
}

TEST_F(Casts, ARecorderBesideThePreviewMakesOneUntilItGoes) {
    graph.setNode(kStream, stream());
    addViewer(kViewer, "plasmashell");
    addViewer(kOther, "obs");
    EXPECT_TRUE(graph.casting());
    graph.remove(kLinks + kOther);
    EXPECT_FALSE(graph.casting());
}

TEST_F(Casts, AViewerThatSaysNothingOfItselfCounts) {
    graph.setNode(kStream, stream());
    addViewer(kViewer, "");
    EXPECT_TRUE(graph.casting());
    graph.remove(kViewer);
    EXPECT_TRUE(graph.casting());
}

}  // namespace
}  // namespace skavlo
