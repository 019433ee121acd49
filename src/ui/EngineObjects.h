#pragma once

#include <QJSEngine>
#include <QQmlEngine>
#include <QVariant>

namespace varnel {

/// Hands an object to the screens of an engine, which see it as a singleton of its class. It stays with the
/// caller and outlives the engine.
template <typename T>
void provide(QQmlEngine& engine, T& object)
{
    engine.setProperty(T::staticMetaObject.className(), QVariant::fromValue<QObject*>(&object));
}

/// What provide() handed over, for the create() of a class that the screens see as a singleton; null if
/// nothing was.
template <typename T>
T* provided(QQmlEngine* engine)
{
    auto* const object =
        qobject_cast<T*>(engine->property(T::staticMetaObject.className()).template value<QObject*>());
    if (object)
        QJSEngine::setObjectOwnership(object, QJSEngine::CppOwnership);
    return object;
}

} // namespace varnel
