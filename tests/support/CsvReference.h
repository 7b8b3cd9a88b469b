// The CSV quoting rules written out the plain way, one comma at a time: the oracle that the
// reader's block-wise parser must agree with, in the tests and in the fuzz target.
#pragma once

#include "korvex/runtime/Windows1252.h"

#include <QByteArray>
#include <QStringList>

namespace korvex::test {

// The fields of one line (without its LF) as the rules give them.
inline QStringList ReferenceCsvFields(QByteArray line, bool doubleApostrophes)
{
    line.replace("\r", "");
    const auto nextComma = [&line](qsizetype from) {
        const qsizetype at = line.indexOf(',', from);
        return at < 0 ? line.size() : at;
    };
    QStringList fields;
    qsizetype p = 0;
    while (p < line.size()) {
        qsizetype comma = nextComma(p);
        while (line.mid(p, comma - p).count('"') % 2 == 1 && comma < line.size())
            comma = nextComma(comma + 1);
        QByteArray field = line.mid(p, comma - p);
        if (field.size() >= 2 && field.startsWith('"') && field.endsWith('"'))
            field = field.mid(1, field.size() - 2).replace("\"\"", "\"");
        if (doubleApostrophes)
            field.replace("'", "''");
        fields.append(FromWindows1252(field));
        p = comma + 1;
    }
    return fields;
}

}  // namespace korvex::test
