#pragma once

#include <QString>

namespace varnel {

/// The text with every lone surrogate replaced by U+FFFD. Text that enters the program from outside as UTF-16
/// goes through here, so that whatever is kept can be written as UTF-8 and read back the same.
QString wellFormed(QString text);

} // namespace varnel
