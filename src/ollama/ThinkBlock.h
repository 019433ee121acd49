#pragma once

#include <QString>

namespace varnel {

/// Takes the reasoning out of a reply that begins with it: older servers leave what the model writes between
/// "<think>" and "</think>" inside the content. The content may come in pieces that are cut anywhere. Only a
/// block at the very beginning is taken out, and white space behind its tags goes with them. One that is
/// never closed is reasoning to its end.
class ThinkBlock
{
public:
    /// What a piece of content is.
    struct Parts
    {
        QString thinking; ///< comes before the reply
        QString reply;

        bool operator==(const Parts&) const = default;
    };

    /// The next piece of content. What may be the beginning of a tag is kept until that is known.
    Parts take(const QString& content);
    /// What was kept, once the content has ended.
    Parts finish();
    /// There is no block: the server tells reasoning and reply apart itself.
    void expectNone();

private:
    enum class Place {
        Before,       ///< nothing but white space so far
        AfterOpening, ///< in the white space behind "<think>"
        Inside,
        AfterClosing, ///< in the white space behind "</think>"
        Behind,
    };

    bool advance(Parts& parts);
    bool findOpening();
    bool findClosing(Parts& parts);

    Place m_place = Place::Before;
    QString m_kept;
};

/// The parts of a content that came in one piece.
ThinkBlock::Parts splitThinkBlock(const QString& content);

} // namespace varnel
