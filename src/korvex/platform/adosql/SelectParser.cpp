// A small tokenizer and a reader for the SELECT shapes data-entry forms use.
#include "korvex/platform/adosql/SelectParser.h"

#include <QStringList>

namespace korvex::ado {
namespace {

struct Token {
    enum Kind { Word, QuotedName, Literal, Symbol, End } kind = End;
    QString text;  // words as written, quoted names without their quotes, symbols as written
    qsizetype pos = 0;
};

bool IsWordStart(QChar c)
{
    return c.isLetter() || c == u'_';
}

bool IsWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_' || c == u'$';
}

// Reads up to the closing quote; a doubled closing quote stands for one. False when unterminated.
bool ReadQuoted(const QString& sql, qsizetype& i, QChar close, QString& out)
{
    for (++i; i < sql.size(); ++i) {
        if (sql[i] == close) {
            if (close != u']' && i + 1 < sql.size() && sql[i + 1] == close) {
                out += close;
                ++i;
                continue;
            }
            ++i;
            return true;
        }
        out += sql[i];
    }
    return false;
}

// Splits the statement into tokens; an unterminated quote or comment gives no tokens at all.
std::vector<Token> Tokenize(const QString& sql)
{
    std::vector<Token> tokens;
    qsizetype i = 0;
    while (i < sql.size()) {
        const QChar c = sql[i];
        if (c.isSpace()) {
            ++i;
        } else if (c == u'-' && i + 1 < sql.size() && sql[i + 1] == u'-') {
            while (i < sql.size() && sql[i] != u'\n')
                ++i;
        } else if (c == u'/' && i + 1 < sql.size() && sql[i + 1] == u'*') {
            const qsizetype end = sql.indexOf(QStringLiteral("*/"), i + 2);
            if (end < 0)
                return {};
            i = end + 2;
        } else if (c == u'"' || c == u'`' || c == u'[') {
            Token t{Token::QuotedName, {}, i};
            if (!ReadQuoted(sql, i, c == u'[' ? QChar(u']') : c, t.text))
                return {};
            tokens.push_back(std::move(t));
        } else if (c == u'\'') {
            Token t{Token::Literal, {}, i};
            if (!ReadQuoted(sql, i, c, t.text))
                return {};
            tokens.push_back(std::move(t));
        } else if (IsWordStart(c)) {
            const qsizetype start = i;
            while (i < sql.size() && IsWordChar(sql[i]))
                ++i;
            tokens.push_back({Token::Word, sql.mid(start, i - start), start});
        } else if (c.isDigit() || (c == u'.' && i + 1 < sql.size() && sql[i + 1].isDigit())) {
            const qsizetype start = i;
            while (i < sql.size() && (sql[i].isLetterOrNumber() || sql[i] == u'.'))
                ++i;
            tokens.push_back({Token::Literal, sql.mid(start, i - start), start});
        } else {
            tokens.push_back({Token::Symbol, QString(c), i});
            ++i;
        }
    }
    tokens.push_back({Token::End, {}, sql.size()});
    return tokens;
}

bool Is(const Token& t, const char* word)
{
    return t.kind == Token::Word && t.text.compare(QLatin1StringView(word), Qt::CaseInsensitive) == 0;
}

bool IsSymbol(const Token& t, char16_t c)
{
    return t.kind == Token::Symbol && t.text.size() == 1 && t.text[0] == c;
}

// An empty quoted identifier ("", ``, []) names nothing: no database accepts it as a name.
bool IsName(const Token& t)
{
    return t.kind == Token::Word || (t.kind == Token::QuotedName && !t.text.isEmpty());
}

// Words that end a FROM clause's table reference or stand where an alias cannot.
bool IsClauseWord(const Token& t)
{
    static const char* const words[] = {"WHERE", "ORDER", "GROUP", "HAVING", "LIMIT", "OFFSET", "FETCH", "FOR",
                                        "UNION", "INTERSECT", "EXCEPT", "MINUS", "WINDOW", "JOIN", "INNER",
                                        "LEFT", "RIGHT", "FULL", "CROSS", "NATURAL", "ON", "USING", "AS",
                                        "FROM", "END", "AND", "OR", "NOT", "IS", "NULL", "IN", "LIKE", "BETWEEN",
                                        "COLLATE", "ASC", "DESC", "WITH"};
    if (t.kind != Token::Word)
        return false;
    for (const char* w : words) {
        if (Is(t, w))
            return true;
    }
    return false;
}

bool IsAggregate(const Token& t)
{
    static const char* const names[] = {"COUNT", "SUM", "MIN", "MAX", "AVG", "TOTAL", "GROUP_CONCAT", "STRING_AGG",
                                        "ARRAY_AGG", "STDDEV", "VARIANCE", "EVERY", "BOOL_AND", "BOOL_OR"};
    for (const char* n : names) {
        if (Is(t, n))
            return true;
    }
    return false;
}

// One item of the select list: tokens [begin, end).
SelectItem ReadItem(const std::vector<Token>& tokens, std::size_t begin, std::size_t end, bool& aggregate)
{
    SelectItem item;
    std::size_t last = end;
    // A trailing "AS name", or a bare name after a complete expression, is the alias.
    if (end - begin >= 2 && IsName(tokens[end - 1]) && Is(tokens[end - 2], "AS")) {
        item.alias = tokens[end - 1].text;
        last = end - 2;
    } else if (end - begin >= 2 && IsName(tokens[end - 1]) && !IsClauseWord(tokens[end - 1]) &&
               (IsName(tokens[end - 2]) || IsSymbol(tokens[end - 2], u')') || tokens[end - 2].kind == Token::Literal) &&
               !IsClauseWord(tokens[end - 2])) {
        item.alias = tokens[end - 1].text;
        last = end - 1;
    }
    for (std::size_t i = begin; i + 1 < last; ++i) {
        if (IsAggregate(tokens[i]) && IsSymbol(tokens[i + 1], u'('))
            aggregate = true;
    }
    // A column reference: name, name.name or name.name.name, or a star after any of them.
    std::vector<const Token*> parts;
    bool reference = last > begin;
    for (std::size_t i = begin; i < last && reference; ++i) {
        const bool expectName = (i - begin) % 2 == 0;
        if (expectName) {
            if ((IsName(tokens[i]) && !IsClauseWord(tokens[i]) && !(i + 1 < last && IsSymbol(tokens[i + 1], u'('))) ||
                (IsSymbol(tokens[i], u'*') && i + 1 == last))
                parts.push_back(&tokens[i]);
            else
                reference = false;
        } else if (!IsSymbol(tokens[i], u'.')) {
            reference = false;
        }
    }
    if (reference && (last - begin) % 2 == 1 && parts.size() <= 3) {
        item.isColumn = true;
        item.column = parts.back()->text;
        if (parts.size() >= 2)
            item.qualifier = parts[parts.size() - 2]->text;
        if (item.alias.isEmpty() && item.column != u'*')
            item.alias = item.column;
    }
    return item;
}

}  // namespace

const SelectItem* SelectStatement::ItemNamed(const QString& name) const
{
    for (const SelectItem& item : items) {
        if (item.alias.compare(name, Qt::CaseInsensitive) == 0)
            return &item;
    }
    return nullptr;
}

bool SelectStatement::HasStar() const
{
    for (const SelectItem& item : items) {
        if (item.isColumn && item.column == u'*' &&
            (item.qualifier.isEmpty() || item.qualifier.compare(tableAlias.isEmpty() ? table : tableAlias,
                                                                 Qt::CaseInsensitive) == 0))
            return true;
    }
    return false;
}

SelectStatement ParseSelect(const QString& sql)
{
    SelectStatement result;
    const std::vector<Token> tokens = Tokenize(sql);
    if (tokens.empty() || !Is(tokens[0], "SELECT"))
        return result;
    std::size_t i = 1;
    bool rowPerRow = true;
    if (Is(tokens[i], "ALL")) {
        ++i;
    } else if (Is(tokens[i], "DISTINCT")) {
        rowPerRow = false;
        ++i;
    }
    if (Is(tokens[i], "TOP")) {
        if (tokens[i + 1].kind != Token::Literal)
            return result;
        i += 2;  // TOP n: still one row per table row
    }
    result.listStart = tokens[i].pos;
    // The select list runs to FROM at depth 0.
    int depth = 0;
    std::size_t itemStart = i;
    bool aggregate = false;
    for (;; ++i) {
        const Token& t = tokens[i];
        if (t.kind == Token::End || (depth == 0 && (Is(t, "FROM") || IsSymbol(t, u',')))) {
            if (itemStart == i)
                return result;  // an empty item
            result.items.push_back(ReadItem(tokens, itemStart, i, aggregate));
            itemStart = i + 1;
            if (!IsSymbol(t, u','))
                break;
        } else if (IsSymbol(t, u'(')) {
            ++depth;
        } else if (IsSymbol(t, u')')) {
            if (--depth < 0)
                return result;
        } else if (IsSymbol(t, u';')) {
            return result;  // the statement ends before any FROM: what follows is another
        }
    }
    result.isSelect = true;
    if (!Is(tokens[i], "FROM"))
        return result;  // SELECT without FROM: an expression of no table
    ++i;
    // FROM [schema.]table [[AS] alias], then a clause word, ";" or the end.
    std::vector<const Token*> name;
    for (;;) {
        if (!IsName(tokens[i]) || IsClauseWord(tokens[i]))
            return result;  // a subquery, a function or nothing where the table should be
        name.push_back(&tokens[i++]);
        if (!IsSymbol(tokens[i], u'.'))
            break;
        ++i;
    }
    if (name.size() > 2)
        return result;
    if (Is(tokens[i], "AS")) {
        if (!IsName(tokens[i + 1]))
            return result;
        result.tableAlias = tokens[i + 1].text;
        i += 2;
    } else if (IsName(tokens[i]) && !IsClauseWord(tokens[i])) {
        result.tableAlias = tokens[i].text;
        ++i;
    }
    const Token& next = tokens[i];
    const bool ends = next.kind == Token::End || IsSymbol(next, u';') ||
                      (IsClauseWord(next) && !Is(next, "JOIN") && !Is(next, "INNER") && !Is(next, "LEFT") &&
                       !Is(next, "RIGHT") && !Is(next, "FULL") && !Is(next, "CROSS") && !Is(next, "NATURAL") &&
                       !Is(next, "ON") && !Is(next, "USING"));
    if (!ends)
        return result;
    // The rest: joins hidden in subqueries do not matter, grouping and set operators do.
    depth = 0;
    for (; tokens[i].kind != Token::End; ++i) {
        const Token& t = tokens[i];
        if (IsSymbol(t, u'('))
            ++depth;
        else if (IsSymbol(t, u')'))
            --depth;
        else if (depth == 0 && (Is(t, "GROUP") || Is(t, "HAVING") || Is(t, "UNION") || Is(t, "INTERSECT") ||
                                Is(t, "EXCEPT") || Is(t, "MINUS")))
            rowPerRow = false;
        else if (depth == 0 && IsSymbol(t, u';') && tokens[i + 1].kind != Token::End)
            return result;  // a second statement
    }
    result.singleTable = true;
    result.rowPerTableRow = rowPerRow && !aggregate;
    result.table = name.back()->text;
    if (name.size() == 2)
        result.schema = name.front()->text;
    return result;
}

}  // namespace korvex::ado
