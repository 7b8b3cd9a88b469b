// Environment routines: folders, paths, registry strings, locale settings and text helpers.
#include "korvex/core/Environment.h"
#include "tests/support/PinnedSettings.h"

#include <QDir>
#include <QFontMetrics>
#include <QSettings>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace korvex {
namespace {

TEST(Environment, PathsAndFolders)
{
    const QString sep = QDir::separator();
    EXPECT_EQ(AddBackslash(QStringLiteral("/tmp/x")), "/tmp/x" + sep);
    EXPECT_EQ(AddBackslash(QStringLiteral("/tmp/x/")), "/tmp/x/") << "already ends in a separator";
    EXPECT_EQ(FileNameOfPath(QStringLiteral("/srv/data/orders.csv")), "orders.csv");
    EXPECT_EQ(FileNameOfPath(QStringLiteral("orders.csv")), "") << "no separator, no name";
    EXPECT_FALSE(GetTempFolder().endsWith(sep));
    EXPECT_EQ(GetSpecialFolder(42), "") << "codes without a folder";
    EXPECT_TRUE(GetSpecialFolder(100).endsWith(sep));

    qputenv("KORVEX_TEST_VALUE", "Dutch");
    EXPECT_EQ(GetEnvironmentValue(QStringLiteral("KORVEX_TEST_VALUE")), "Dutch");
    qunsetenv("KORVEX_TEST_VALUE");
    EXPECT_EQ(GetEnvironmentValue(QStringLiteral("KORVEX_TEST_VALUE")), "");
}

TEST(Environment, RegistryStringsAndProgramFiles)
{
    if (QFileInfo(QStringLiteral("/opt")).isDir()) {
        EXPECT_EQ(GetSpecialFolder(10), "/opt/");
    }
    QTemporaryDir dir;
    const QString machine = dir.filePath(QStringLiteral("machine.ini"));
    {
        QSettings m(machine, QSettings::IniFormat);
        m.setValue(QStringLiteral("SOFTWARE/Microsoft/Windows/CurrentVersion/ProgramFilesDir"), dir.path() + QChar(0));
        m.setValue(QStringLiteral("SOFTWARE/Microsoft/Windows/CurrentVersion/Version"), QStringLiteral("dword:00000005"));
    }
    RegistryKey::SetLocations(dir.filePath(QStringLiteral("user.ini")), machine);
    auto key = RegistryKey::Open(HKEY_LOCAL_MACHINE, QStringLiteral("SOFTWARE\\Microsoft\\Windows\\CurrentVersion"));
    ASSERT_TRUE(key.has_value());
    EXPECT_EQ(RegQueryString(*key, QStringLiteral("ProgramFilesDir")), dir.path()) << "the trailing zero goes";
    EXPECT_EQ(RegQueryString(*key, QStringLiteral("ProgramFilesDir"), REG_DWORD), dir.path())
        << "a string value is read whatever type is asked for";
    EXPECT_EQ(RegQueryString(*key, QStringLiteral("ProgramFilesDir"), REG_BINARY), dir.path());
    EXPECT_EQ(RegQueryString(*key, QStringLiteral("Version")), "") << "a number is no text";
    EXPECT_EQ(RegQueryString(*key, QStringLiteral("Missing")), "");
    RegistryKey::SetLocations({}, {});
}

TEST(Environment, LocaleStringsAndTextHelpers)
{
    test::PinnedSettings pin(RegionalSettings::German());
    EXPECT_EQ(GetLocaleString(14, QStringLiteral(".")), ",");
    EXPECT_EQ(GetLocaleString(15, QStringLiteral(",")), ".");
    EXPECT_EQ(GetLocaleString(31, QString()), "dd.MM.yyyy");
    EXPECT_EQ(GetLocaleString(1, QString()), "0407");
    EXPECT_EQ(GetLocaleString(9999, QStringLiteral("fallback")), "fallback");

    EXPECT_EQ(CountOccurrences(QStringLiteral("aaaa"), QStringLiteral("aa")), 3) << "overlapping hits count";
    EXPECT_EQ(CountOccurrences(QStringLiteral("#,##0.00;(#,##0.00)"), QStringLiteral(";")), 1);
    EXPECT_EQ(CountOccurrences(QStringLiteral("AbAB"), QStringLiteral("ab"), 1), 2);
    EXPECT_EQ(CountOccurrences(QString(), QStringLiteral("a")), 0);
    EXPECT_TRUE(IsAllDigits(QString()));
    EXPECT_TRUE(IsAllDigits(QStringLiteral("0123")));
    EXPECT_FALSE(IsAllDigits(QStringLiteral("12a")));
    EXPECT_FALSE(IsAllDigits(QStringLiteral("١٢")) ) << "only 0 to 9";

    const QFont font(QStringLiteral("DejaVu Sans"), 10);
    const QString longText = QStringLiteral("Kilimanjaro expedition supplies");
    EXPECT_EQ(TruncateWithEllipsis(font, longText, 10000), longText);
    const QString cut = TruncateWithEllipsis(font, longText, 80);
    EXPECT_TRUE(cut.startsWith(QStringLiteral("..."))) << "the ellipsis goes in front";
    EXPECT_LE(QFontMetrics(font).horizontalAdvance(cut), 80);
    EXPECT_TRUE(longText.startsWith(cut.mid(3)));
    EXPECT_EQ(TruncateWithEllipsis(font, longText, 1), QStringLiteral("...Kilim")) << "never below five characters";
    EXPECT_EQ(TruncateWithEllipsis(font, QStringLiteral("Short"), 1), "Short") << "five characters are never cut";
}

}  // namespace
}  // namespace korvex
