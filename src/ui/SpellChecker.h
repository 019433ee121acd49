#pragma once

#include <QString>
#include <QStringList>

#include <memory>

namespace varnel {

/// The spelling of words as the dictionaries of the desktop have it. Each call may read files, the first one
/// above all, so it is for another thread; calls come one after the other, from whichever.
class SpellChecker
{
public:
    SpellChecker() = default;
    SpellChecker(const SpellChecker&) = delete;
    SpellChecker& operator=(const SpellChecker&) = delete;
    SpellChecker(SpellChecker&&) = delete;
    SpellChecker& operator=(SpellChecker&&) = delete;
    virtual ~SpellChecker() = default;

    /// Whether a word is written as one of the dictionaries has it. Without any dictionary every word is.
    virtual bool isRight(const QString& word) = 0;
    /// What may have been meant, the likeliest first.
    virtual QStringList suggestions(const QString& word) = 0;
    /// Puts a word into the user's own dictionary, which other programs use too.
    virtual void add(const QString& word) = 0;
};

/// The checker of this system; it loads nothing before the first word.
/// @param languages whose dictionaries are wanted, as in "en_US" or "de"; those that are not there are passed
/// over.
std::unique_ptr<SpellChecker> systemSpellChecker(const QStringList& languages);

} // namespace varnel
