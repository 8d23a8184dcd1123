#include "StatusItem/BusProperties.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>

bool answerProperties(const QDBusMessage& message, const QDBusConnection& connection,
                      const QVariantMap& properties) {
    if (message.member() == "GetAll") return connection.send(message.createReply(properties));
    if (message.member() != "Get") return false;
    const QVariant value = properties.value(message.arguments().value(1).toString());
    return value.isValid() &&
           connection.send(message.createReply(QVariant::fromValue(QDBusVariant(value))));
}
