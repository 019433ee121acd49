#pragma once

#include <QString>
#include <QStringList>

#include <set>
#include <vector>

namespace varnel {

/// Where a word stands in a paragraph.
struct WordRange
{
    int start = 0;
    int length = 0;

    bool operator==(const WordRange&) const = default;
};

/// The words of a paragraph whose spelling is worth a look: none within a fenced block or a span of code, no
/// address or path, no word with a digit, an underscore or capitals inside, and none of a script that no
/// dictionary is for.
/// @param fence what the paragraph stands in: 0 outside of a fenced block, else as a call for the paragraph
/// before has left it. It is changed to what the next paragraph stands in.
std::vector<WordRange> wordsToSpell(const QString& paragraph, const std::set<QChar::Script>& scripts,
                                    int& fence);

/// The languages of the user, best first, as dictionaries name them: each with its country, then without.
QStringList spellingLanguages(const QStringList& uiLanguages);

/// The scripts that these languages are written in.
std::set<QChar::Script> scriptsOf(const QStringList& languages);

} // namespace varnel
