#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace db {

// One parameter of a statement: a colon followed by a name.
struct SqlParameter {
    QString name;           // without the colon, case as written
    qsizetype position = 0; // offset of the colon in the text, from 0
    qsizetype length = 0;   // the colon and the name

    friend bool operator==(const SqlParameter&, const SqlParameter&) = default;
};

// A statement in the driver's form: every parameter replaced by "?".
struct DriverStatement {
    QString text;               // the statement with "?" markers, all else unchanged
    QStringList parameterNames; // one entry per marker, in the order of the markers
};

// The parameters of a statement, in order of appearance.
//
// A parameter is a colon followed by a name of letters, digits and underscores; a name may
// begin with a digit (":1"). Not parameters: a run of two or more colons (a "::" cast), a
// colon followed by anything else (":=", ": x", a colon at the end), and anything inside
// string literals ('...' with '' inside), quoted identifiers ("...", [...] and `...`, each
// with its closing character doubled inside) or comments (-- to the end of the line and
// /* ... */, not nested). An unterminated literal, identifier or comment runs to the end
// of the text.
//
// Every occurrence is a parameter of its own: a name written twice gives two parameters
// of the same name, each asked for and bound separately, because each becomes one "?"
// marker.
QList<SqlParameter> FindParameters(const QString& sql);

// The names of FindParameters, one per occurrence.
QStringList ParameterNames(const QString& sql);

// Replaces each parameter by "?" and lists the names in marker order. A "?" already in
// the text is left alone and has no entry in the list.
DriverStatement ToDriverStatement(const QString& sql);

} // namespace db
