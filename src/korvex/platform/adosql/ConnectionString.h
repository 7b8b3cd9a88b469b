// Connection strings as ADO writes them: "Key=Value" pairs separated by semicolons. Keys ignore
// case and surrounding blanks; a value in double or single quotes (the quote doubled inside) or
// in braces (ODBC's style, "}}" for a brace) may hold semicolons and equals signs; a key given
// twice takes its last value. The pairs keep their text as written, so that an ODBC driver gets
// its own keywords exactly as the user wrote them.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace korvex::ado {

struct ConnectionStringPair {
    QString key;    // trimmed, as written
    QString value;  // trimmed, quotes and braces taken off
    QString text;   // the whole pair as written, trimmed
};

class ConnectionString {
public:
    ConnectionString() = default;
    // Raises 3001 for a pair without "=" or an unterminated quote or brace.
    static ConnectionString Parse(const QString& text);

    const std::vector<ConnectionStringPair>& Pairs() const noexcept { return mPairs; }
    bool Has(const QString& key) const;
    // The value of the first of `keys` that is given (they are synonyms); `fallback` otherwise.
    QString Value(const QStringList& keys, const QString& fallback = {}) const;
    // Sets or replaces a key's value (the text becomes "key=value", quoted when it must be).
    void Set(const QString& key, const QString& value);
    // The pairs as written, without those named in `omit`, joined with ";".
    QString TextWithout(const QStringList& omit) const;

private:
    const ConnectionStringPair* Find(const QString& key) const;

    std::vector<ConnectionStringPair> mPairs;
};

}  // namespace korvex::ado
