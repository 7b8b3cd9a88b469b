// clsLanguage: the language strings of the library and its host, loaded from a language file
// (a CSV file of keys and five language columns) once per thread, looked up by identifier with
// suffixes and substitutions, plus the language-dependent date texts and SQL column choice.
#pragma once

#include "korvex/runtime/Variant.h"

#include <QObject>
#include <QString>

#include <memory>

namespace korvex {

class LanguageTable;

enum Languages : int {
    langEnglish = 0,
    langGerman = 1,
    langFrench = 2,
    langAmerican = 3,
    langDutch = 4,
    // The language given to LanguageInitialise.
    langDefault = -2,
};

// The host family's own names for the same five languages.
enum VyrLanguages : int {
    vyrlangEnglish = 0,
    vyrlangGerman = 1,
    vyrlangFrench = 2,
    vyrlangAmerican = 3,
    vyrlangDutch = 4,
};

enum TextSuffixes : int {
    tsNone = 0,
    tsColon = 1,
    tsEllipsis = 2,
    tsSpace = 3,
};

class clsLanguage : public QObject {
    Q_OBJECT
    Q_PROPERTY(int ActiveLanguage READ ActiveLanguage)

public:
    ~clsLanguage() override;

    // A new instance; it becomes this thread's current one.
    static std::shared_ptr<clsLanguage> Create();
    // The instance the host reaches through the class name without creating one (one per
    // thread, made on first use).
    static clsLanguage& Global();
    // The instance the library's lookups use: the last one created on this thread, or a new
    // one when there is none yet.
    static const std::shared_ptr<clsLanguage>& Current();

    // The language of the last LanguageInitialise; -1 before the first.
    int ActiveLanguage() const { return mActiveLanguage; }

    // Loads the table from the file (when a path is given) and makes `Language` active.
    // Errors of the file (cannot open, malformed) reach the caller as the CSV reader raises them.
    Q_INVOKABLE void LanguageInitialise(int Language, const QString& LangFilePath);

    // The text of `StringId` in `LanguageCode` (langDefault: the loaded language), or
    // `DefaultString` when there is none; then the suffix, then "%1" and "%2" replaced.
    Q_INVOKABLE QString LGS(const QString& StringId, const QString& DefaultString = {}, int Suffix = tsNone,
                            const QString& SubVar1 = {}, const QString& SubVar2 = {},
                            int LanguageCode = langDefault);

    // A select expression for a column kept once per language (BaseColumnName_0 to _4).
    Q_INVOKABLE QString LGSDB(const QString& BaseColumnName, const QString& TablePrefix = {}) const;

    // "Monday, 5 January 2009" in English or German; -1 means the active language.
    Q_INVOKABLE QString LongDate(const korvex::Variant& ForDate, int Language = -1, bool IncDay = true) const;
    Q_INVOKABLE QString WeekdayName(const korvex::Variant& ForDate, int Language = -1) const;

private:
    clsLanguage();
    void LoadFile(int Language, const QString& path);

    // Absent until LanguageInitialise is given a file.
    std::unique_ptr<LanguageTable> mTable;
    int mActiveLanguage = -1;
};

}  // namespace korvex
