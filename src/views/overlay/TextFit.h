#pragma once

#include <QFont>
#include <QString>

namespace dorix {

/// How much room a text takes in the interface's font. In whole points, with a little to spare for what the
/// screen's scale does to glyphs.
class TextFit {
 public:
    explicit TextFit(int fontSize);

    /// On one line.
    int width(const QString& text) const;

    int lines(const QString& text, int width) const;

    /// The least width, up to `limit`, in which the text takes no more lines than at `limit`: its lines then
    /// are of like length and no word stands alone on the last.
    int balancedWidth(const QString& text, int limit) const;

 private:
    QFont font_;
};

}  // namespace dorix
