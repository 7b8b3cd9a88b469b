// A private temporary folder for tests that need real files: files are written byte for byte
// (so code page and line ends are exactly what the test says) and removed with the folder.
#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace korvex::test {

class TestFolder {
public:
    // The full path of `name` in the folder, written with `bytes`.
    QString Write(const QString& name, const QByteArray& bytes) const
    {
        const QString path = Path(name);
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate)) << qPrintable(path);
        EXPECT_EQ(file.write(bytes), bytes.size());
        return path;
    }
    QString Path(const QString& name) const { return mDir.filePath(name); }
    QString Root() const { return mDir.path(); }

private:
    QTemporaryDir mDir;
};

}  // namespace korvex::test
