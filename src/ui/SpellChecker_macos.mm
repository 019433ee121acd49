// The spelling of macOS, through NSSpellChecker.
//
// Written against Apple's documentation and never built or run by its authors, who have no Mac: whoever
// builds it first should try a wrong word, its suggestions, and a word that is learned.

#include "ui/SpellChecker.h"

#import <AppKit/AppKit.h>

#if !__has_feature(objc_arc)
#error "This file relies on automatic reference counting (-fobjc-arc)."
#endif

namespace varnel {

namespace {

/// The shared checker belongs to the main thread, which waits for nobody who calls here.
class SystemChecker final : public SpellChecker
{
public:
    explicit SystemChecker(const QStringList& languages)
        : m_languages(languages)
    {}

    bool isRight(const QString& word) override
    {
        NSString* const text = word.toNSString();
        __block bool right = false;
        dispatch_sync(dispatch_get_main_queue(), ^{
          NSArray<NSString*>* const languages = available();
          right = languages.count == 0;
          for (NSString* language in languages) {
              const NSRange wrong = [NSSpellChecker.sharedSpellChecker checkSpellingOfString:text
                                                                                  startingAt:0
                                                                                    language:language
                                                                                        wrap:NO
                                                                      inSpellDocumentWithTag:0
                                                                                   wordCount:nil];
              right = right || wrong.length == 0;
          }
        });
        return right;
    }

    QStringList suggestions(const QString& word) override
    {
        NSString* const text = word.toNSString();
        __block QStringList found;
        dispatch_sync(dispatch_get_main_queue(), ^{
          for (NSString* language in available()) {
              NSArray<NSString*>* const guesses =
                  [NSSpellChecker.sharedSpellChecker guessesForWordRange:NSMakeRange(0, text.length)
                                                                inString:text
                                                                language:language
                                                  inSpellDocumentWithTag:0];
              for (NSString* guess in guesses)
                  found.append(QString::fromNSString(guess));
          }
        });
        found.removeDuplicates();
        return found;
    }

    void add(const QString& word) override
    {
        NSString* const text = word.toNSString();
        dispatch_sync(dispatch_get_main_queue(), ^{
          [NSSpellChecker.sharedSpellChecker learnWord:text];
        });
    }

private:
    NSArray<NSString*>* available() const
    {
        NSArray<NSString*>* const known = NSSpellChecker.sharedSpellChecker.availableLanguages;
        NSMutableArray<NSString*>* const wanted = [NSMutableArray array];
        for (const QString& language : m_languages) {
            if ([known containsObject:language.toNSString()])
                [wanted addObject:language.toNSString()];
        }
        return wanted;
    }

    const QStringList m_languages;
};

} // namespace

std::unique_ptr<SpellChecker> systemSpellChecker(const QStringList& languages)
{
    return std::make_unique<SystemChecker>(languages);
}

} // namespace varnel
