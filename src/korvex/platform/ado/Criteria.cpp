// A hand-written tokenizer and recursive-descent reader for criteria and sort texts.
#include "korvex/platform/ado/Criteria.h"

#include "korvex/platform/ado/AdoError.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/RegionalSettings.h"

#include <QChar>

namespace korvex::ado {
namespace {

// Deeper nesting than any hand-written criteria would use; it also bounds the reader's stack.
constexpr int MaxDepth = 64;

[[noreturn]] void Malformed()
{
    RaiseAdo(adErrInvalidArgument);
}

struct Token {
    enum class Kind : unsigned char { End, Word, Name, Text, Hash, Number, Open, Close, Comma, Op };
    Kind kind = Kind::End;
    QString text;
    CriteriaOp op = CriteriaOp::Equal;
};

bool IsWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == u'_';
}

class Tokenizer {
public:
    explicit Tokenizer(QStringView text) : mText(text) {}

    Token Next()
    {
        while (mPos < mText.size() && mText[mPos].isSpace())
            ++mPos;
        Token t;
        if (mPos >= mText.size())
            return t;
        const QChar c = mText[mPos];
        switch (c.unicode()) {
        case u'(': ++mPos; t.kind = Token::Kind::Open; return t;
        case u')': ++mPos; t.kind = Token::Kind::Close; return t;
        case u',': ++mPos; t.kind = Token::Kind::Comma; return t;
        case u'\'': return Quoted();
        case u'#': return Delimited(u'#', Token::Kind::Hash);
        case u'[': return Delimited(u']', Token::Kind::Name);
        case u'=': ++mPos; return Operator(CriteriaOp::Equal);
        case u'<':
            ++mPos;
            if (Take(u'>'))
                return Operator(CriteriaOp::NotEqual);
            return Operator(Take(u'=') ? CriteriaOp::LessEqual : CriteriaOp::Less);
        case u'>': ++mPos; return Operator(Take(u'=') ? CriteriaOp::GreaterEqual : CriteriaOp::Greater);
        default: break;
        }
        if (c.isDigit() || c == u'.' || c == u'-' || c == u'+' || c == u'$')
            return Numeral();
        if (IsWordChar(c)) {
            const qsizetype start = mPos;
            while (mPos < mText.size() && IsWordChar(mText[mPos]))
                ++mPos;
            t.kind = Token::Kind::Word;
            t.text = mText.sliced(start, mPos - start).toString();
            return t;
        }
        Malformed();
    }

private:
    bool Take(char16_t c)
    {
        if (mPos < mText.size() && mText[mPos] == c) {
            ++mPos;
            return true;
        }
        return false;
    }

    static Token Operator(CriteriaOp op)
    {
        Token t;
        t.kind = Token::Kind::Op;
        t.op = op;
        return t;
    }

    Token Quoted()
    {
        Token t;
        t.kind = Token::Kind::Text;
        ++mPos;
        for (;;) {
            if (mPos >= mText.size())
                Malformed();
            const QChar c = mText[mPos++];
            if (c == u'\'') {
                if (!Take(u'\''))
                    return t;
            }
            t.text += c;
        }
    }

    Token Delimited(char16_t close, Token::Kind kind)
    {
        const qsizetype start = ++mPos;
        while (mPos < mText.size() && mText[mPos] != close)
            ++mPos;
        if (mPos >= mText.size())
            Malformed();
        Token t;
        t.kind = kind;
        t.text = mText.sliced(start, mPos - start).toString();
        ++mPos;
        return t;
    }

    // Numbers as the criteria write them: a sign, a dollar sign, decimals with a point, an exponent.
    Token Numeral()
    {
        QString digits;
        if (mText[mPos] == u'-' || mText[mPos] == u'+')
            digits += mText[mPos++];
        Take(u'$');
        bool any = false;
        while (mPos < mText.size() && (mText[mPos].isDigit() || mText[mPos] == u'.')) {
            any = any || mText[mPos].isDigit();
            digits += mText[mPos++];
        }
        if (any && mPos < mText.size() && (mText[mPos] == u'e' || mText[mPos] == u'E')) {
            digits += mText[mPos++];
            if (mPos < mText.size() && (mText[mPos] == u'-' || mText[mPos] == u'+'))
                digits += mText[mPos++];
            while (mPos < mText.size() && mText[mPos].isDigit())
                digits += mText[mPos++];
        }
        if (!any)
            Malformed();
        Token t;
        t.kind = Token::Kind::Number;
        t.text = digits;
        return t;
    }

    QStringView mText;
    qsizetype mPos = 0;
};

bool IsKeyword(const Token& t, QLatin1StringView word)
{
    return t.kind == Token::Kind::Word && t.text.compare(word, Qt::CaseInsensitive) == 0;
}

class CriteriaReader {
public:
    explicit CriteriaReader(QStringView text) : mTokens(text) { Advance(); }

    CriteriaNode Read()
    {
        CriteriaNode root = Or(0);
        if (mToken.kind != Token::Kind::End)
            Malformed();
        return root;
    }

private:
    void Advance() { mToken = mTokens.Next(); }

    // Terms joined by one keyword; a single term stands for itself.
    template <class Term>
    CriteriaNode Joined(int depth, QLatin1StringView keyword, CriteriaNode::Kind kind, Term term)
    {
        CriteriaNode first = (this->*term)(depth);
        if (!IsKeyword(mToken, keyword))
            return first;
        CriteriaNode node;
        node.kind = kind;
        node.children.push_back(std::move(first));
        while (IsKeyword(mToken, keyword)) {
            Advance();
            node.children.push_back((this->*term)(depth));
        }
        return node;
    }

    CriteriaNode Or(int depth)
    {
        return Joined(depth, QLatin1StringView("OR"), CriteriaNode::Kind::Or, &CriteriaReader::And);
    }

    CriteriaNode And(int depth)
    {
        CriteriaNode node = Joined(depth, QLatin1StringView("AND"), CriteriaNode::Kind::And, &CriteriaReader::Primary);
        if (node.kind != CriteriaNode::Kind::And)
            return node;
        // ADO refuses (a OR b) AND c: the same rows must be written as (a AND c) OR (b AND c).
        for (const CriteriaNode& child : node.children) {
            if (child.kind == CriteriaNode::Kind::Or)
                Malformed();
        }
        return node;
    }

    CriteriaNode Primary(int depth)
    {
        if (mToken.kind == Token::Kind::Open) {
            if (depth >= MaxDepth)
                Malformed();
            Advance();
            CriteriaNode inner = Or(depth + 1);
            if (mToken.kind != Token::Kind::Close)
                Malformed();
            Advance();
            return inner;
        }
        return Clause();
    }

    CriteriaNode Clause()
    {
        CriteriaNode node;
        if (mToken.kind == Token::Kind::Name || (mToken.kind == Token::Kind::Word && !IsReserved(mToken)))
            node.field = mToken.text;
        else
            Malformed();
        Advance();
        if (mToken.kind == Token::Kind::Op)
            node.op = mToken.op;
        else if (IsKeyword(mToken, QLatin1StringView("LIKE")))
            node.op = CriteriaOp::Like;
        else
            Malformed();
        Advance();
        node.value = Value();
        Advance();
        return node;
    }

    CriteriaValue Value() const
    {
        static const RegionalSettings us = RegionalSettings::EnglishUS();
        CriteriaValue v;
        v.text = mToken.text;
        switch (mToken.kind) {
        case Token::Kind::Text: v.kind = CriteriaValue::Kind::Text; return v;
        case Token::Kind::Hash:
            // Dates in #...# are written the American way; anything else between # is text.
            if (auto date = ParseDate(mToken.text, us)) {
                v.kind = CriteriaValue::Kind::Date;
                v.number = date->serial;
            } else {
                v.kind = CriteriaValue::Kind::Text;
            }
            return v;
        case Token::Kind::Number: {
            bool ok = false;
            v.number = mToken.text.toDouble(&ok);
            if (!ok)
                Malformed();
            v.kind = CriteriaValue::Kind::Number;
            return v;
        }
        case Token::Kind::Word:
            if (IsKeyword(mToken, QLatin1StringView("NULL"))) {
                v.kind = CriteriaValue::Kind::Null;
                return v;
            }
            break;
        default: break;
        }
        Malformed();
    }

    static bool IsReserved(const Token& t)
    {
        return IsKeyword(t, QLatin1StringView("AND")) || IsKeyword(t, QLatin1StringView("OR")) ||
               IsKeyword(t, QLatin1StringView("LIKE")) || IsKeyword(t, QLatin1StringView("NULL"));
    }

    Tokenizer mTokens;
    Token mToken;
};

}  // namespace

CriteriaNode ParseCriteria(QStringView text)
{
    return CriteriaReader(text).Read();
}

std::vector<SortTerm> ParseSortTerms(QStringView text)
{
    std::vector<SortTerm> terms;
    Tokenizer tokens(text);
    Token t = tokens.Next();
    if (t.kind == Token::Kind::End)
        return terms;
    for (;;) {
        if (t.kind != Token::Kind::Name && t.kind != Token::Kind::Word)
            Malformed();
        SortTerm term{t.text, false};
        t = tokens.Next();
        if (IsKeyword(t, QLatin1StringView("ASC")) || IsKeyword(t, QLatin1StringView("DESC"))) {
            term.descending = IsKeyword(t, QLatin1StringView("DESC"));
            t = tokens.Next();
        }
        terms.push_back(std::move(term));
        if (t.kind == Token::Kind::End)
            return terms;
        if (t.kind != Token::Kind::Comma)
            Malformed();
        t = tokens.Next();
    }
}

}  // namespace korvex::ado
