#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QString>
#include <functional>

namespace skavlo {

// The words of the sheets and of the screen reader, which the table's texts do not cover.
struct Texts {
    Q_GADGET
    QML_VALUE_TYPE(skavloTexts)
    Q_PROPERTY(QString cancel MEMBER cancel)
    Q_PROPERTY(QString done MEMBER done)
    Q_PROPERTY(QString red MEMBER red)
    Q_PROPERTY(QString green MEMBER green)
    Q_PROPERTY(QString blue MEMBER blue)
    Q_PROPERTY(QString opacity MEMBER opacity)
    Q_PROPERTY(QString hue MEMBER hue)
    Q_PROPERTY(QString spectrum MEMBER spectrum)
    Q_PROPERTY(QString hex MEMBER hex)
    Q_PROPERTY(QString chooseEmoji MEMBER chooseEmoji)
    Q_PROPERTY(QString chooseImage MEMBER chooseImage)
    Q_PROPERTY(QString noImages MEMBER noImages)
    Q_PROPERTY(QString parentFolder MEMBER parentFolder)
    Q_PROPERTY(QString language MEMBER language)
    Q_PROPERTY(QString info MEMBER info)
    Q_PROPERTY(QString decrease MEMBER decrease)
    Q_PROPERTY(QString increase MEMBER increase)
    Q_PROPERTY(QString busy MEMBER busy)

  public:
    QString cancel, done, red, green, blue, opacity, hue, spectrum, hex, chooseEmoji, chooseImage,
        noImages, parentFolder, language, info, decrease, increase, busy, images;
};

// `choose`: picks one of its two arguments, Chinese and English.
Texts textsIn(const std::function<const char*(const char* zh, const char* en)>& choose);

}  // namespace skavlo
