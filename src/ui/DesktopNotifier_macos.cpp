// Written after Apple's documentation; never built.
#include "ui/DesktopNotifier.h"

namespace varnel {

DesktopNotifier::DesktopNotifier(QObject* parent)
    : QObject(parent)
{}

/// Notifications there need a signed bundle that asked for the right to show them; the mark in the list of
/// conversations tells of a finished reply.
void DesktopNotifier::show(const QUuid&, const QString&, const QString&) {}

} // namespace varnel
