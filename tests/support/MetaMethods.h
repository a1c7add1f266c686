#pragma once

#include <QMetaMethod>
#include <QMetaObject>
#include <QMetaProperty>
#include <QStringList>

// What a class adds to the meta-object of its base, in order, for comparison with a list in a test.

// As "public signal clicked()".
inline QStringList ownMethods(const QMetaObject &meta)
{
    static const char *const accesses[] = {"private", "protected", "public"};
    static const char *const kinds[] = {"method", "signal", "slot", "constructor"};
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        methods << QStringLiteral("%1 %2 %3")
                       .arg(accesses[method.access()], kinds[method.methodType()],
                           QString::fromLatin1(method.methodSignature()));
    }
    return methods;
}

// As "int delay".
inline QStringList ownProperties(const QMetaObject &meta)
{
    QStringList properties;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        properties << QStringLiteral("%1 %2").arg(property.typeName(), property.name());
    }
    return properties;
}
