#include "views/overlay/TextFit.h"

#include "views/Theme.h"

#include <QFontMetricsF>
#include <QTextLayout>
#include <algorithm>
#include <cmath>

namespace dorix {

namespace {
constexpr int spare = 2;
}

TextFit::TextFit(int fontSize) : font_(textFont) { font_.setPixelSize(fontSize); }

int TextFit::width(const QString& text) const {
    const QFontMetricsF metrics(font_);
    double widest = 0;
    for (const QString& line : text.split('\n')) widest = std::max(widest, metrics.horizontalAdvance(line));
    return static_cast<int>(std::ceil(widest)) + spare;
}

int TextFit::lines(const QString& text, int width) const {
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    int count = 0;
    for (const QString& paragraph : text.split('\n')) {
        QTextLayout layout(paragraph, font_);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(width - spare);
            ++count;
        }
        layout.endLayout();
    }
    return count;
}

int TextFit::balancedWidth(const QString& text, int limit) const {
    const int natural = width(text);
    if (natural <= limit) return natural;
    const int wanted = lines(text, limit);
    int low = limit / 3;
    int high = limit;
    while (low < high) {
        const int middle = (low + high) / 2;
        if (lines(text, middle) <= wanted) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return high;
}

}  // namespace dorix
