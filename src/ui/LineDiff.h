#pragma once

#include <QString>
#include <QStringView>

#include <vector>

namespace varnel {

/// A line of the comparison of two texts.
struct DiffLine
{
    enum class Kind {
        Same,
        Removed,
        Added,
        Left, ///< stands for lines that are left out; its text says how many
    };

    Kind kind = Kind::Same;
    QString text;

    bool operator==(const DiffLine&) const = default;
};

/// What turns one text into the other, by lines, with three lines around each change. Texts that differ in
/// too much are shown as one removed and one added whole; a result that is too long to be read, and a line
/// that is, is cut.
std::vector<DiffLine> lineDiff(QStringView before, QStringView after);

} // namespace varnel
