#pragma once

#include <QVariantMap>

class QDBusConnection;
class QDBusMessage;

/// Answers a "Get" or "GetAll" of the bus's standard interface from an object's properties. False,
/// and no answer, for another message and for a property that isn't among them.
bool answerProperties(const QDBusMessage& message, const QDBusConnection& connection,
                      const QVariantMap& properties);
