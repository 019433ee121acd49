#pragma once

#include <QString>
#include <QStringView>

namespace varnel {

struct CharacterReference
{
    qsizetype length = 0; ///< characters it takes in the source, 0 when there is none
    QString text;
};

/// The character reference that `source` begins with: a number, or one of the names of HTML 4. Text with an
/// unknown name stays as it is written.
CharacterReference characterReference(QStringView source);

} // namespace varnel
