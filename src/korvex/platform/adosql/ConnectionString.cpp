// Reading "Key=Value;..." connection strings.
#include "korvex/platform/adosql/ConnectionString.h"

#include "korvex/platform/ado/AdoError.h"

namespace korvex::ado {
namespace {

const QString ConnectionSource = QStringLiteral("ADODB.Connection");

// Reads a value from `pos` to the ";" that ends it; a quoted or braced value must be followed by
// blanks only.
QString ReadValue(const QString& text, qsizetype& pos)
{
    while (pos < text.size() && text[pos].isSpace())
        ++pos;
    if (pos < text.size() && (text[pos] == u'"' || text[pos] == u'\'' || text[pos] == u'{')) {
        const QChar open = text[pos];
        const QChar close = open == u'{' ? QChar(u'}') : open;
        QString value;
        for (++pos;; ++pos) {
            if (pos >= text.size())
                RaiseAdo(adErrInvalidArgument, ConnectionSource);
            if (text[pos] == close) {
                if (pos + 1 < text.size() && text[pos + 1] == close) {
                    value += close;
                    ++pos;
                    continue;
                }
                ++pos;
                break;
            }
            value += text[pos];
        }
        while (pos < text.size() && text[pos] != u';') {
            if (!text[pos].isSpace())
                RaiseAdo(adErrInvalidArgument, ConnectionSource);
            ++pos;
        }
        return value;
    }
    const qsizetype end = text.indexOf(u';', pos);
    const qsizetype stop = end < 0 ? text.size() : end;
    QString value = text.mid(pos, stop - pos).trimmed();
    pos = stop;
    return value;
}

QString Quoted(const QString& value)
{
    if (!value.contains(u';') && !value.contains(u'"') && !value.contains(u'\'') && value.trimmed() == value &&
        !value.startsWith(u'{'))
        return value;
    QString quoted = value;
    quoted.replace(u'"', QStringLiteral("\"\""));
    return u'"' + quoted + u'"';
}

}  // namespace

ConnectionString ConnectionString::Parse(const QString& text)
{
    ConnectionString result;
    qsizetype pos = 0;
    while (pos < text.size()) {
        const qsizetype start = pos;
        const qsizetype equals = text.indexOf(u'=', pos);
        const qsizetype semicolon = text.indexOf(u';', pos);
        if (equals < 0 || (semicolon >= 0 && semicolon < equals)) {
            // A segment without "=" is allowed only when it is blank (";;" or a trailing ";").
            const qsizetype stop = semicolon < 0 ? text.size() : semicolon;
            if (!text.mid(pos, stop - pos).trimmed().isEmpty())
                RaiseAdo(adErrInvalidArgument, ConnectionSource);
            pos = stop + 1;
            continue;
        }
        ConnectionStringPair pair;
        pair.key = text.mid(pos, equals - pos).trimmed();
        if (pair.key.isEmpty())
            RaiseAdo(adErrInvalidArgument, ConnectionSource);
        pos = equals + 1;
        pair.value = ReadValue(text, pos);
        pair.text = text.mid(start, pos - start).trimmed();
        ++pos;  // past the ";"
        std::erase_if(result.mPairs, [&](const ConnectionStringPair& p) {
            return p.key.compare(pair.key, Qt::CaseInsensitive) == 0;
        });
        result.mPairs.push_back(std::move(pair));
    }
    return result;
}

const ConnectionStringPair* ConnectionString::Find(const QString& key) const
{
    for (const ConnectionStringPair& pair : mPairs) {
        if (pair.key.compare(key, Qt::CaseInsensitive) == 0)
            return &pair;
    }
    return nullptr;
}

bool ConnectionString::Has(const QString& key) const
{
    return Find(key) != nullptr;
}

QString ConnectionString::Value(const QStringList& keys, const QString& fallback) const
{
    for (const QString& key : keys) {
        if (const ConnectionStringPair* pair = Find(key))
            return pair->value;
    }
    return fallback;
}

void ConnectionString::Set(const QString& key, const QString& value)
{
    std::erase_if(mPairs, [&](const ConnectionStringPair& p) { return p.key.compare(key, Qt::CaseInsensitive) == 0; });
    mPairs.push_back({key, value, key + u'=' + Quoted(value)});
}

QString ConnectionString::TextWithout(const QStringList& omit) const
{
    QStringList parts;
    for (const ConnectionStringPair& pair : mPairs) {
        if (!omit.contains(pair.key, Qt::CaseInsensitive))
            parts << pair.text;
    }
    return parts.join(u';');
}

}  // namespace korvex::ado
