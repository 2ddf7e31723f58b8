// Frames as they are drawn, in points.
#include <QQmlProperty>

#include "tests/unit/screen/screen_fixture.h"

namespace skavlo {
namespace {

class ScreenGeometry : public ScreenFixture, public testing::WithParamInterface<int> {
  protected:
    [[nodiscard]] QRectF inHeader(const QString& name) const {
        return frameIn(find(name), find("header"));
    }
};

TEST_P(ScreenGeometry, HeaderStandsAtItsFrames) {
    const double w = GetParam();
    open({.width = GetParam()});
    EXPECT_EQ(find("header")->size(), QSizeF(w, 140));
    EXPECT_EQ(inHeader("headerIcon"), QRectF(20, 8, 36, 36));
    EXPECT_EQ(find("headerIcon")->property("cornerRadius"), 8);
    EXPECT_EQ(inHeader("headerTitle"), QRectF(66, 6, w - 66, 40));
    EXPECT_EQ(inHeader("languageButton"), QRectF(w - 90, 12, 70, 28));
    EXPECT_EQ(inHeader("infoButton"), QRectF(w - 90, 52, 70, 28));
    EXPECT_EQ(inHeader("about"), QRectF(20, 54, w - 115, 80));
    const QFont title = find("headerTitle")->property("font").value<QFont>();
    EXPECT_EQ(title.pixelSize(), 34);
    EXPECT_EQ(title.weight(), QFont::Bold);
    const QFont about = find("about")->property("font").value<QFont>();
    EXPECT_EQ(about.pixelSize(), 14);
    EXPECT_EQ(about.weight(), QFont::Medium);
}

TEST_P(ScreenGeometry, TitleViewStandsInTheBar) {
    open({.width = GetParam()});
    QQuickItem* title = find("titleView");
    EXPECT_EQ(title->size(), QSizeF(110, 36));
    EXPECT_EQ(frameIn(title, find("navigationBar")).center(), QPointF(GetParam() / 2.0, 22));
    EXPECT_EQ(frameIn(find("navIcon"), title), QRectF(0, 4, 28, 28));
    EXPECT_EQ(frameIn(find("navTitle"), title), QRectF(36, 0, 74, 36));
    EXPECT_EQ(find("navTitle")->property("font").value<QFont>().pixelSize(), 17);
}

TEST_P(ScreenGeometry, SliderRowsStandAtTheirFrames) {
    open({.width = GetParam()});
    QQuickItem* itsRow = row(2, 5);
    const double inset = GetParam() < 375 ? 16 : 20;
    const double w = GetParam() - 2 * inset;
    EXPECT_EQ(itsRow->size(), QSizeF(w, 44));
    const auto inside = [&](const char* name) { return frameIn(find(name, itsRow), itsRow); };
    EXPECT_EQ(inside("sliderName"), QRectF(18, 11, 92, 22));
    EXPECT_EQ(inside("minus"), QRectF(110, 7, 30, 30));
    EXPECT_EQ(inside("slider"), QRectF(140, 7, w - 220, 30));
    EXPECT_EQ(inside("plus"), QRectF(w - 80, 7, 30, 30));
    EXPECT_EQ(inside("sliderValue"), QRectF(w - 50, 11, 40, 22));
    EXPECT_EQ(find("sliderName", itsRow)->property("font").value<QFont>().pixelSize(), 15);
    EXPECT_EQ(find("sliderValue", itsRow)->property("font").value<QFont>().pixelSize(), 14);
}

TEST_P(ScreenGeometry, AccessoriesHaveTheirSizesAndKeepTheMargin) {
    open({.width = GetParam(), .mode = 2, .emojiBorder = true});
    const double inset = GetParam() < 375 ? 16 : 20;
    const double right = GetParam() - 3 * inset;
    const auto inside = [&](int index, const char* name) {
        return frameIn(inRow(2, index, name), row(2, index));
    };
    EXPECT_EQ(inside(3, "emojiField"), QRectF(right - 150, 7, 150, 30));
    // In the middle, on a whole pixel.
    EXPECT_EQ(inside(8, "switch"), QRectF(right - 51, 6, 51, 31));
    EXPECT_EQ(inside(9, "well"), QRectF(right - 44, 0, 44, 44));
}

TEST_P(ScreenGeometry, SectionsAreInsetCards) {
    open({.width = GetParam()});
    const double inset = GetParam() < 375 ? 16 : 20;
    const QList<QQuickItem*> cards = findAll("card");
    ASSERT_EQ(cards.size(), 3);
    const int rows[] = {1, 3, 12};
    for (int section = 0; section < 3; ++section) {
        EXPECT_EQ(cards[section]->x(), inset);
        EXPECT_EQ(cards[section]->size(), QSizeF(GetParam() - 2 * inset, 44 * rows[section]));
        EXPECT_EQ(cards[section]->property("radius"), 10);
    }
}

INSTANTIATE_TEST_SUITE_P(Widths, ScreenGeometry, testing::Values(320, 390, 768),
                         testing::PrintToStringParamName());

class ScreenLook : public ScreenFixture {
  protected:
    [[nodiscard]] static QColor colour(const QQuickItem* item, const char* property = "color") {
        return item->property(property).value<QColor>();
    }
    [[nodiscard]] static QFont font(const QQuickItem* item) {
        return item->property("font").value<QFont>();
    }
};

TEST_F(ScreenLook, ButtonsOfTheHeaderAreDrawnAsStated) {
    open();
    for (const char* name : {"languageButton", "infoButton"}) {
        const QQuickItem* ground = find("buttonGround", find(name));
        EXPECT_EQ(ground->property("radius"), 14) << name;
        EXPECT_EQ(colour(ground), QColor("#1F767680")) << name;
        EXPECT_EQ(ground->size(), QSizeF(70, 28)) << name;
    }
    const QQuickItem* title = find("buttonText", find("languageButton"));
    EXPECT_EQ(title->property("text"), QString("EN / 中"));
    EXPECT_EQ(font(title).pixelSize(), 13);
    EXPECT_EQ(font(title).weight(), QFont::Medium);
    EXPECT_EQ(colour(title), QColor("#000000"));
}

TEST_F(ScreenLook, TitlesAndAboutTextAreDrawnAsStated) {
    open();
    EXPECT_EQ(colour(find("about")), QColor("#993C3C43"));
    EXPECT_EQ(font(find("navTitle")).weight(), QFont::Bold);
    EXPECT_EQ(find("navIcon")->property("cornerRadius"), 6);
    for (const char* name : {"navIcon", "headerIcon"}) {
        EXPECT_TRUE(find(name)->property("aspectFill").toBool()) << name;
        EXPECT_EQ(colour(find(name), "tintColor"), QColor("#8E8E93")) << name;
    }
}

TEST_F(ScreenLook, SliderRowsAreDrawnAsStated) {
    open();
    const QQuickItem* name = inRow(2, 5, "sliderName");
    EXPECT_EQ(name->property("minimumPixelSize"), 12);  // 0.8 of 15
    EXPECT_EQ(colour(name), QColor("#000000"));
    for (const auto& [button, text] : {std::pair{"minus", "-"}, std::pair{"plus", "+"}}) {
        const QQuickItem* title = find("buttonText", inRow(2, 5, button));
        EXPECT_EQ(title->property("text"), QString(text));
        EXPECT_EQ(font(title).pixelSize(), 22) << button;
        EXPECT_EQ(font(title).weight(), QFont::Bold) << button;
        EXPECT_EQ(colour(title), QColor("#007AFF")) << button;
    }
    const QQuickItem* value = inRow(2, 5, "sliderValue");
    EXPECT_EQ(colour(value), QColor("#808080"));
    EXPECT_EQ(value->property("horizontalAlignment").toInt(), Qt::AlignRight);
}

TEST_F(ScreenLook, EmojiFieldIsAlignedToTheRight) {
    open({.mode = 2});
    const QQuickItem* field = inRow(2, 3, "emojiField");
    EXPECT_EQ(field->property("horizontalAlignment").toInt(), Qt::AlignRight);
}

TEST_F(ScreenLook, SwitchIsDrawnAsStated) {
    open();
    QQuickItem* off = inRow(0, 0, "switch");
    QQuickItem* on = inRow(1, 1, "switch");
    EXPECT_EQ(frame(find("track", off)), QRectF(0, 0, 51, 31));
    EXPECT_EQ(frame(find("thumb", off)), QRectF(2, 2, 27, 27));
    EXPECT_EQ(frame(find("thumb", on)), QRectF(22, 2, 27, 27));
    EXPECT_EQ(find("track", on)->property("radius"), 15.5);
    EXPECT_EQ(find("thumb", on)->property("radius"), 13.5);
    EXPECT_EQ(colour(find("thumb", on)), QColor("#FFFFFF"));
    const QQuickItem* border = find("thumbBorder", on);
    EXPECT_EQ(frame(border), QRectF(0, 0, 27, 27));
    EXPECT_EQ(border->property("radius"), 13.5);
    const QQmlProperty width(const_cast<QQuickItem*>(border), "border.width");
    const QQmlProperty black(const_cast<QQuickItem*>(border), "border.color");
    EXPECT_EQ(width.read(), 1);
    EXPECT_EQ(black.read().value<QColor>(), QColor::fromRgbF(0, 0, 0, 0.1F));
    EXPECT_EQ(colour(find("spinner", on)), QColor("#808080"));
    EXPECT_EQ(find("track", off)->property("color").value<QColor>(), QColor("#E5E5EA"));
    EXPECT_EQ(find("track", on)->property("color").value<QColor>(), QColor("#34C759"));
}

TEST_F(ScreenLook, DarkAndLightChangeLive) {
    open();
    const QImage light = window->grabWindow();
    EXPECT_EQ(light.pixelColor(3, 300), QColor("#F2F2F7"));
    EXPECT_EQ(light.pixelColor(100, 230), QColor("#FFFFFF"));
    screen->setDark(true);
    settle();
    const QImage dark = window->grabWindow();
    EXPECT_EQ(dark.pixelColor(3, 300), QColor("#000000"));
    EXPECT_EQ(dark.pixelColor(100, 230), QColor("#1C1C1E"));
    QQuickItem* on = inRow(1, 1, "switch");
    EXPECT_EQ(find("track", on)->property("color").value<QColor>(), QColor("#30D158"));
    EXPECT_EQ(inRow(2, 11, "rowText")->property("color").value<QColor>(), QColor("#FF453A"));
}

TEST_F(ScreenLook, ImagesHaveRoundCorners) {
    open();
    const QImage picture = window->grabWindow();
    EXPECT_EQ(picture.pixelColor(20, 52), QColor("#F2F2F7"));  // the icon's corner is cut off
    EXPECT_NE(picture.pixelColor(38, 54), QColor("#F2F2F7"));
    EXPECT_TRUE(find("headerIcon")->property("loaded").toBool());
}

class ScreenThumbnail : public ScreenFixture {
  protected:
    // Of an image of a kind that Qt does not know.
    void openWithImage() {
        files.files.writeAtomically(directory.customImageFile(), "image");
        open({.mode = 1, .imagePath = directory.customImageFile()});
        thumbnail = find("thumbnail");
        ASSERT_TRUE(thumbnail);
        reveal(thumbnail);
        ASSERT_EQ(askedToDecode.size(), 1U);
        EXPECT_EQ(askedToDecode[0].first.toStdString(), directory.customImageFile());
    }
    [[nodiscard]] QColor colourAt(int x, int y) const {
        const QPointF corner = frameIn(thumbnail, window->contentItem()).topLeft();
        return window->grabWindow().pixelColor((corner + QPointF(x, y)).toPoint());
    }

    QQuickItem* thumbnail = nullptr;
};

TEST_F(ScreenThumbnail, FillsItsSquareWithWhatTheDecoderMakesOfTheImage) {
    openWithImage();
    EXPECT_EQ(thumbnail->size(), QSizeF(30, 30));
    EXPECT_EQ(thumbnail->property("cornerRadius"), 6);
    QImage wide(300, 100, QImage::Format_RGB32);
    wide.fill(Qt::blue);
    for (int y = 0; y < 100; ++y) {
        for (int x = 100; x < 200; ++x) wide.setPixelColor(x, y, Qt::red);
    }
    askedToDecode[0].second(wide);
    settle();
    EXPECT_EQ(colourAt(15, 15), QColor(Qt::red));
    EXPECT_EQ(colourAt(2, 15), QColor(Qt::red));  // blue is cut off
    EXPECT_EQ(colourAt(27, 15), QColor(Qt::red));
    EXPECT_EQ(colourAt(0, 0), QColor(Qt::white));  // round corners
}

TEST_F(ScreenThumbnail, OfAnImageThatNobodyCanDecodeIsEmpty) {
    openWithImage();
    askedToDecode[0].second(QImage());
    settle();
    EXPECT_EQ(colourAt(15, 15), QColor(Qt::white));
}

TEST_F(ScreenLook, WithoutTheIconFileItsSignIsShown) {
    open({.iconPath = "/nowhere/AppIcon60x60@3x.png"});
    for (const char* name : {"headerIcon", "navIcon", "splashIcon"}) {
        EXPECT_FALSE(find(name)->property("loaded").toBool()) << name;
    }
    const QColor middle = window->grabWindow().pixelColor(38, 70);
    EXPECT_EQ(middle, QColor("#8E8E93"));
    find("table")->setProperty("contentY", 200 - 44);  // the title comes
    const QQuickItem* icon = find("navIcon");
    const QImage scrolled = window->grabWindow();
    EXPECT_EQ(scrolled.pixelColor(this->middle(icon)), QColor("#8E8E93"));
    EXPECT_EQ(find("splashIcon")->property("tintColor").value<QColor>(), QColor("#000000"));
}

TEST_F(ScreenLook, TitleFadesWithTheScroll) {
    open({.height = 500});
    QQuickItem* table = find("table");
    const std::pair<double, double> alphas[] = {{0, 0}, {50, 0}, {65, 0.5}, {80, 1}, {200, 1}};
    for (const auto& [scrolled, alpha] : alphas) {
        table->setProperty("contentY", scrolled - 44);
        EXPECT_DOUBLE_EQ(find("navTitleView")->opacity(), alpha) << scrolled;
    }
    table->setProperty("contentY", -144);
    EXPECT_EQ(find("navTitleView")->opacity(), 0);
}

TEST_F(ScreenLook, TheSplashRunsFromLightToDark) {
    open({.splash = true});
    ASSERT_EQ(screen->splash()->iconAlpha(), 0);
    const QImage picture = window->grabWindow();
    const int last = picture.height() - 1;
    const std::pair<int, QColor> expected[] = {
        {0, QColor(143, 126, 166)}, {last / 2, QColor(96, 84, 111)}, {last, QColor(48, 42, 56)}};
    for (const auto& [y, wanted] : expected) {
        for (const int x : {0, picture.width() / 2, picture.width() - 1}) {
            const QColor seen = picture.pixelColor(x, y);
            EXPECT_NEAR(seen.red(), wanted.red(), 1) << x << " " << y;
            EXPECT_NEAR(seen.green(), wanted.green(), 1) << x << " " << y;
            EXPECT_NEAR(seen.blue(), wanted.blue(), 1) << x << " " << y;
        }
    }
}

// With the icon and with the sign in its place.
class ScreenSplash : public ScreenFixture, public testing::WithParamInterface<bool> {};

TEST_P(ScreenSplash, PlaysAndGoes) {
    open({.splash = true, .iconPath = GetParam() ? SKAVLO_ICON : "/nowhere/icon.png"});
    EXPECT_EQ(find("splashIcon")->property("loaded"), GetParam());
    EXPECT_TRUE(find("splash")->isVisible());
    EXPECT_EQ(find("splashIcon")->size(), QSizeF(90, 90));
    EXPECT_EQ(find("splashIcon")->property("cornerRadius"), 20);
    EXPECT_EQ(frameIn(find("splashIcon"), find("splash")).center(), QPointF(195, 422));
    for (const int time : {0, 100, 300, 600, 850, 1000, 1240}) {
        step(time - static_cast<int>(screen->splash()->time() * 1000 + 0.5));
        ASSERT_NEAR(screen->splash()->time(), time / 1000.0, 0.0015);
        const SplashFrame expected = splashFrame(screen->splash()->time());
        EXPECT_DOUBLE_EQ(find("splashIcon")->scale(), expected.iconScale) << time;
        EXPECT_NEAR(find("splashIcon")->opacity(), std::clamp(expected.iconAlpha, 0.0, 1.0), 1e-6);
        EXPECT_NEAR(find("splash")->opacity(), expected.splashAlpha, 1e-6) << time;
        EXPECT_NEAR(find("content")->opacity(), expected.contentAlpha, 1e-6) << time;
    }
    step(20);
    EXPECT_FALSE(find("splash")->isVisible());
    EXPECT_EQ(find("content")->opacity(), 1);
}

INSTANTIATE_TEST_SUITE_P(WithIcon, ScreenSplash, testing::Bool(),
                         testing::PrintToStringParamName());

TEST_F(ScreenLook, TheSplashZoomsOutEvenIfItsSpringInWasInterrupted) {
    open({.splash = true});
    step(300);
    step(700);  // as on a machine that had no time for frames meanwhile
    const SplashFrame expected = splashFrame(screen->splash()->time());
    EXPECT_GT(expected.iconScale, 1);
    EXPECT_DOUBLE_EQ(find("splashIcon")->scale(), expected.iconScale);
    EXPECT_NEAR(find("splash")->opacity(), expected.splashAlpha, 1e-6);
    step(2000);
    EXPECT_FALSE(find("splash")->isVisible());
}

}  // namespace
}  // namespace skavlo
