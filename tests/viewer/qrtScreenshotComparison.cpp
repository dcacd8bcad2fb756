#include "viewer/qrtScreenshotComparison.h"

#include <QDir>
#include <QFile>
#include <algorithm>
#include <cmath>

namespace qrtplay {

namespace {

constexpr int block = 8;
constexpr double tolerance = 14;  // of 255, on average over a block

struct Mean {
    double red = 0;
    double green = 0;
    double blue = 0;
};

Mean meanOf(QImage const& image, QRect const& part) {
    Mean mean;
    for (int y = part.top(); y <= part.bottom(); ++y) {
        for (int x = part.left(); x <= part.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            mean.red += qRed(pixel);
            mean.green += qGreen(pixel);
            mean.blue += qBlue(pixel);
        }
    }
    const double count = part.width() * part.height();
    return {mean.red / count, mean.green / count, mean.blue / count};
}

double distance(Mean const& a, Mean const& b) {
    return std::max({std::abs(a.red - b.red), std::abs(a.green - b.green), std::abs(a.blue - b.blue)});
}

/// White where the pictures differ, a faint image of the expected one elsewhere; null when they do not.
QImage differenceOf(QImage const& seen, QImage const& expected) {
    QImage difference = expected.convertToFormat(QImage::Format_RGB32);
    bool differs = false;
    for (int y = 0; y < expected.height(); y += block) {
        for (int x = 0; x < expected.width(); x += block) {
            const QRect part = QRect(x, y, block, block).intersected(expected.rect());
            const bool isAlike = distance(meanOf(seen, part), meanOf(expected, part)) <= tolerance;
            differs |= !isAlike;
            for (int row = part.top(); row <= part.bottom(); ++row)
                for (int column = part.left(); column <= part.right(); ++column)
                    difference.setPixel(column, row,
                                        isAlike ? QColor(expected.pixel(column, row)).darker(300).rgb() : 0xffffffff);
        }
    }
    return differs ? difference : QImage();
}

}  // namespace

::testing::AssertionResult looksLike(QImage const& seen, std::string const& name) {
    const QString file = QString::fromStdString(name) + ".png";
    const QString kept = QString(QRT_SCREENSHOTS) + "/" + file;
    if (qEnvironmentVariableIsSet("QRT_KEEP_SCREENSHOTS")) {
        if (!seen.save(kept)) return ::testing::AssertionFailure() << kept.toStdString() << " cannot be written";
        return ::testing::AssertionSuccess();
    }
    const QString folder = QDir::current().filePath("screenshots");
    QDir().mkpath(folder);
    const QString path = folder + "/" + file;
    const QImage expected(kept);
    if (expected.isNull() || expected.size() != seen.size()) {
        (void)seen.save(path);
        return ::testing::AssertionFailure()
               << kept.toStdString() << " is missing or of another size; seen: " << path.toStdString();
    }
    const QImage difference = differenceOf(seen, expected);
    if (difference.isNull()) return ::testing::AssertionSuccess();
    const QString differencePath = folder + "/" + QString::fromStdString(name) + ".difference.png";
    (void)seen.save(path);
    (void)difference.save(differencePath);
    return ::testing::AssertionFailure() << "looks different: " << path.toStdString() << ", differences in "
                                         << differencePath.toStdString();
}

}  // namespace qrtplay
