// clsLanguage: loading the language file into the table, the lookup with suffix and
// substitutions, the per-language column expression and the English and German date names.
#include "korvex/localisation/clsLanguage.h"

#include "korvex/core/SharedContext.h"
#include "korvex/core/Trace.h"
#include "korvex/data/clsCSVFile.h"
#include "korvex/localisation/LanguageTable.h"
#include "korvex/runtime/Conversions.h"
#include "korvex/runtime/Error.h"

#include <QSet>

namespace korvex {
namespace {

constexpr int LanguageColumns = 5;
constexpr int vbErrItemNotFound = 3265;

const char16_t* const EnglishWeekdays[] = {u"Sunday", u"Monday", u"Tuesday", u"Wednesday",
                                           u"Thursday", u"Friday", u"Saturday"};
const char16_t* const GermanWeekdays[] = {u"Sonntag", u"Montag", u"Dienstag", u"Mittwoch",
                                          u"Donnerstag", u"Freitag", u"Samstag"};
const char16_t* const EnglishMonths[] = {u"January", u"February", u"March",     u"April",
                                         u"May",     u"June",     u"July",      u"August",
                                         u"September", u"October", u"November", u"December"};
const char16_t* const GermanMonths[] = {u"Januar", u"Februar", u"M\u00E4rz",   u"April",
                                        u"Mai",    u"Juni",    u"Juli",        u"August",
                                        u"September", u"Oktober", u"November", u"Dezember"};

// Leading and trailing spaces only, as the host language's Trim removes them; tabs stay.
QString TrimSpaces(const QString& text)
{
    qsizetype begin = 0;
    qsizetype end = text.size();
    while (begin < end && text[begin] == QLatin1Char(' '))
        ++begin;
    while (end > begin && text[end - 1] == QLatin1Char(' '))
        --end;
    return begin == 0 && end == text.size() ? text : text.mid(begin, end - begin);
}

// A cell beyond the widest line read so far counts as empty.
QString OptionalCell(const clsCSVFile& file, int column)
{
    return column <= file.HighestFieldIndex() ? TrimSpaces(file.FieldText(static_cast<short>(column))) : QString();
}

int ResolveLanguage(int language, int active)
{
    return language == -1 ? active : language;
}

}  // namespace

clsLanguage::clsLanguage() = default;
clsLanguage::~clsLanguage() = default;

std::shared_ptr<clsLanguage> clsLanguage::Create()
{
    std::shared_ptr<clsLanguage> instance(new clsLanguage);
    SharedContext::ForThisThread().CurrentLanguage = instance;
    return instance;
}

clsLanguage& clsLanguage::Global()
{
    thread_local std::shared_ptr<clsLanguage> implicitInstance;
    if (!implicitInstance)
        implicitInstance = Create();
    return *implicitInstance;
}

const std::shared_ptr<clsLanguage>& clsLanguage::Current()
{
    std::shared_ptr<clsLanguage>& current = SharedContext::ForThisThread().CurrentLanguage;
    if (!current)
        Create();
    return current;
}

void clsLanguage::LanguageInitialise(int Language, const QString& LangFilePath)
{
    if (!LangFilePath.isEmpty()) {
        mTable = std::make_unique<LanguageTable>();
        LoadFile(Language, LangFilePath);
    }
    mActiveLanguage = Language;
}

// Line 1 is a header; then key and the five language cells. Comment lines (empty key, or a key
// starting with "*") and lines without any text are left out.
void clsLanguage::LoadFile(int Language, const QString& path)
{
    clsCSVFile file;
    file.OpenCSV(path, 1);
    int column = Language + 1;
    if (column > file.HighestFieldIndex())
        column = 1;

    QSet<QString> reportedDuplicates;
    file.MoveNext();
    while (!file.EOFCSV()) {
        const QString key = TrimSpaces(file.FieldText(0));
        if (!key.isEmpty() && !key.startsWith(QLatin1Char('*'))) {
            // The chosen column and the English one are read as the reader gives them, so a
            // file too narrow for them raises the reader's error instead of loading nothing.
            QString text = TrimSpaces(CStr(file.Fields(static_cast<short>(column))));
            if (text.isEmpty())
                text = TrimSpaces(file.FieldText(1));
            if (!text.isEmpty()) {
                LanguageRow row;
                row.Key = key;
                row.Text = text;
                for (int i = 0; i < LanguageColumns; ++i) {
                    const QString cell = OptionalCell(file, i + 1);
                    row.Texts[static_cast<std::size_t>(i)] = cell.isEmpty() ? text : cell;
                }
                if (mTable->Append(std::move(row)) && !reportedDuplicates.contains(key.toCaseFolded())) {
                    reportedDuplicates.insert(key.toCaseFolded());
                    Trace(QStringLiteral("Duplicate language key: ") + key);
                }
            }
        }
        file.MoveNext();
    }
    file.CloseCSV();
    mTable->MoveFirst();
}

QString clsLanguage::LGS(const QString& StringId, const QString& DefaultString, int Suffix, const QString& SubVar1,
                         const QString& SubVar2, int LanguageCode)
{
    const LanguageTable::Match match = mTable ? mTable->Find(StringId) : LanguageTable::Match{};
    const QString* found = &DefaultString;
    if (match.row && LanguageCode == langDefault) {
        found = match.text;
    } else if (match.row && LanguageCode >= 0 && LanguageCode < LanguageColumns) {
        found = &match.row->Texts[static_cast<std::size_t>(LanguageCode)];
    } else if (match.row) {
        // The text fields are Text0 to Text4; any other number names a field that is not there.
        Raise(vbErrItemNotFound, QStringLiteral("clsLanguage.LGS"),
              QStringLiteral("Item cannot be found in the collection corresponding to the requested name or ordinal."));
    }
    // Most captions take neither suffix nor values: hand out the text itself.
    if ((Suffix < tsColon || Suffix > tsSpace) && SubVar1.isEmpty())
        return *found;

    QString result = *found;
    switch (Suffix) {
    case tsColon: result += QLatin1Char(':'); break;
    case tsEllipsis: result += QLatin1String("..."); break;
    case tsSpace: result += QLatin1Char(' '); break;
    default: break;
    }

    // "%2" is only replaced together with "%1", so an empty first value leaves both in place.
    if (!SubVar1.isEmpty()) {
        result.replace(QLatin1String("%1"), SubVar1);
        if (!SubVar2.isEmpty())
            result.replace(QLatin1String("%2"), SubVar2);
    }
    return result;
}

QString clsLanguage::LGSDB(const QString& BaseColumnName, const QString& TablePrefix) const
{
    const QString column = TablePrefix.isEmpty() ? BaseColumnName : TablePrefix + QLatin1Char('.') + BaseColumnName;
    if (mActiveLanguage == langEnglish)
        return column + QLatin1String("_0 As ") + BaseColumnName;
    return QLatin1String("NVL(LTrim(") + column + QLatin1Char('_') + QString::number(mActiveLanguage) +
           QLatin1String("), ") + column + QLatin1String("_0) As ") + BaseColumnName;
}

QString clsLanguage::WeekdayName(const Variant& ForDate, int Language) const
{
    const int weekday = SplitDate(CDate(ForDate)).Weekday();
    switch (ResolveLanguage(Language, mActiveLanguage)) {
    case langEnglish: return QString::fromUtf16(EnglishWeekdays[weekday - 1]);
    case langGerman: return QString::fromUtf16(GermanWeekdays[weekday - 1]);
    default: return {};
    }
}

QString clsLanguage::LongDate(const Variant& ForDate, int Language, bool IncDay) const
{
    const Date date = CDate(ForDate);
    const DateParts parts = SplitDate(date);
    // -1 stands for the active language; langDefault is not replaced and names no language.
    const int language = ResolveLanguage(Language, mActiveLanguage);
    QString month;
    if (language == langEnglish)
        month = QString::fromUtf16(EnglishMonths[parts.Month - 1]);
    else if (language == langGerman)
        month = QString::fromUtf16(GermanMonths[parts.Month - 1]);

    QString result;
    if (IncDay)
        result = WeekdayName(date, language) + QLatin1String(", ");
    return result + QString::number(parts.Day) + QLatin1Char(' ') + month + QLatin1Char(' ') +
           QString::number(parts.Year).rightJustified(4, QLatin1Char('0'));
}

}  // namespace korvex
