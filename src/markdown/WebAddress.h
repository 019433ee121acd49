// Addresses that are links without any markup.
#pragma once

#include <QStringView>

namespace varnel {

/// How many characters the address takes that `text` begins with: "http://…", "https://…" or "www.…", without
/// the punctuation that ends a sentence or a bracket around it. 0 when it begins with none.
qsizetype webAddressLength(QStringView text);

/// The mail address around the "@" at `position`; empty when there is none. It begins no earlier than
/// `earliest`.
QStringView mailAddressAround(QStringView text, qsizetype position, qsizetype earliest);

/// How many characters the link "<scheme:…>" or "<name@host>" takes that `text` begins with, 0 for none.
qsizetype angleLinkLength(QStringView text);

} // namespace varnel
