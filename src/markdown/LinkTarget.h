#pragma once

#include <QString>

namespace varnel {

/// Whether a click may hand this destination to the system: an absolute http or https address with a host, or
/// mailto. Everything else is only text.
bool isOpenableLink(const QString& destination);

/// The text with each character that shows nothing, or changes the order of what is shown, spelled out as its
/// number, "<U+202E>". For link targets and info strings, which must look like what they are.
QString withVisibleControls(const QString& text);

} // namespace varnel
