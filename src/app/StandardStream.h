#pragma once

#include <QString>

namespace varnel {

/// One of the process's standard streams, written through at once.
///
/// A file or pipe gets the exact bytes. On a terminal, control characters of foreign text are shown as the
/// symbols that stand for them, so that no reply can move the cursor, set the title or type into the shell.
class StandardStream
{
public:
    /// @param descriptor 1 for standard output, 2 for standard error.
    explicit StandardStream(int descriptor);

    /// Writes the whole text; throws Error when the stream takes no more.
    void write(const QString& text) const;

private:
    int m_descriptor;
    bool m_isTerminal;
};

/// Puts something that can be neither read nor written in the place of every standard stream that this
/// process was started without. Otherwise the next file or connection gets its number, and text meant for the
/// stream goes there.
void occupyClosedStreams();

/// The text with every control character except line feed and tab replaced by a visible symbol: U+2400 and
/// following for those of ASCII, U+FFFD for those of Latin-1. The carriage return of a CRLF is dropped.
QString neutraliseControls(const QString& text);

} // namespace varnel
