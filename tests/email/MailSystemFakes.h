// Recording stand-ins for the Outlook and Lotus Notes automation objects, with the members
// clsEmail reaches by name. Every call and assignment is written to one journal, so a test
// reads the whole conversation in order; switches make single steps fail.
#pragma once

#include "korvex/runtime/Error.h"
#include "korvex/runtime/Variant.h"

#include <QFileInfo>
#include <QObject>
#include <QStringList>

namespace korvex::test {

struct Journal {
    QStringList lines;
    void operator()(const QString& line) { lines << line; }
};

// A member that fails with an automation error when its switch is on.
inline void FailIf(bool fail, int number = 440)
{
    if (fail)
        Raise(number, QStringLiteral("Fake"), QStringLiteral("Automation error"));
}

class FakeAccount : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString DisplayName MEMBER displayName)
public:
    using QObject::QObject;
    QString displayName;
};

class FakeAccounts : public QObject {
    Q_OBJECT
public:
    explicit FakeAccounts(QObject* parent) : QObject(parent), account(new FakeAccount(this)) {}
    Q_INVOKABLE QObject* Item(int) { return account; }
    FakeAccount* account;
};

class FakeSession : public QObject {
    Q_OBJECT
    Q_PROPERTY(QObject* Accounts MEMBER accounts)
public:
    explicit FakeSession(QObject* parent) : QObject(parent), accounts(new FakeAccounts(this)) {}
    QObject* accounts;
};

class FakeInspector : public QObject {
    Q_OBJECT
    Q_PROPERTY(int EditorType READ EditorType)
public:
    FakeInspector(QObject* parent, Journal& journal) : QObject(parent), mJournal(journal) {}
    int EditorType() const
    {
        mJournal(QStringLiteral("GetInspector.EditorType"));
        return 4;
    }

private:
    Journal& mJournal;
};

struct OutlookSwitches {
    bool failBodyFormat = false;
    bool failSend = false;
    int bodyFormat = 1;
    QString currentHtmlBody;  // what Outlook put in the item (its signature)
    QString currentBody;
    QString account;
};

class FakeAttachments : public QObject {
    Q_OBJECT
public:
    FakeAttachments(QObject* parent, Journal& journal) : QObject(parent), mJournal(journal) {}
    Q_INVOKABLE void Add(const QString& source, int type, int position, const QString& name)
    {
        mJournal(QStringLiteral("Attachments.Add(%1,%2,%3,%4) file there: %5")
                     .arg(source).arg(type).arg(position).arg(name).arg(QFileInfo::exists(source)));
    }

private:
    Journal& mJournal;
};

class FakeMailItem : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString Subject READ Subject WRITE SetSubject)
    Q_PROPERTY(QString Body READ Body WRITE SetBody)
    Q_PROPERTY(QString HTMLBody READ HTMLBody WRITE SetHTMLBody)
    Q_PROPERTY(QString To READ To WRITE SetTo)
    Q_PROPERTY(int BodyFormat READ BodyFormat)
    Q_PROPERTY(QObject* Session MEMBER session)
    Q_PROPERTY(QObject* GetInspector MEMBER inspector)
    Q_PROPERTY(QObject* Attachments MEMBER attachments)
public:
    FakeMailItem(QObject* parent, Journal& journal, const OutlookSwitches& switches)
        : QObject(parent), mJournal(journal), mSwitches(switches), mBody(switches.currentBody),
          mHtmlBody(switches.currentHtmlBody), session(new FakeSession(this)),
          inspector(new FakeInspector(this, journal)), attachments(new FakeAttachments(this, journal))
    {
        static_cast<FakeAccounts*>(static_cast<FakeSession*>(session)->accounts)->account->displayName = switches.account;
    }
    QString Subject() const { return mSubject; }
    void SetSubject(const QString& v) { mSubject = v, mJournal(QStringLiteral("Subject=") + v); }
    QString Body() const { return mBody; }
    void SetBody(const QString& v) { mBody = v, mJournal(QStringLiteral("Body=") + v); }
    QString HTMLBody() const { return mHtmlBody; }
    void SetHTMLBody(const QString& v) { mHtmlBody = v, mJournal(QStringLiteral("HTMLBody=") + v); }
    QString To() const { return mTo; }
    void SetTo(const QString& v) { mTo = v, mJournal(QStringLiteral("To=") + v); }
    int BodyFormat() const
    {
        FailIf(mSwitches.failBodyFormat);
        return mSwitches.bodyFormat;
    }
    Q_INVOKABLE void Save() { mJournal(QStringLiteral("Save")); }
    Q_INVOKABLE void Display() { mJournal(QStringLiteral("Display")); }
    Q_INVOKABLE void Send()
    {
        mJournal(QStringLiteral("Send ") + mSubject);
        FailIf(mSwitches.failSend);
    }

private:
    Journal& mJournal;
    const OutlookSwitches& mSwitches;
    QString mSubject;
    QString mBody;
    QString mHtmlBody;
    QString mTo;

public:
    QObject* session;
    QObject* inspector;
    QObject* attachments;
};

class FakeItems : public QObject {
    Q_OBJECT
public:
    FakeItems(QObject* parent, Journal& journal, const OutlookSwitches& switches)
        : QObject(parent), mJournal(journal), mSwitches(switches) {}
    Q_INVOKABLE QObject* Add()
    {
        mJournal(QStringLiteral("Drafts.Items.Add"));
        return new FakeMailItem(this, mJournal, mSwitches);
    }

private:
    Journal& mJournal;
    const OutlookSwitches& mSwitches;
};

class FakeFolder : public QObject {
    Q_OBJECT
    Q_PROPERTY(QObject* Items MEMBER items)
public:
    FakeFolder(QObject* parent, Journal& journal, const OutlookSwitches& switches)
        : QObject(parent), items(new FakeItems(this, journal, switches)) {}
    QObject* items;
};

class FakeNamespace : public QObject {
    Q_OBJECT
public:
    FakeNamespace(QObject* parent, Journal& journal, const OutlookSwitches& switches, int& draftsFailures)
        : QObject(parent), mJournal(journal), mDrafts(new FakeFolder(this, journal, switches)),
          mDraftsFailures(draftsFailures) {}
    Q_INVOKABLE QObject* GetDefaultFolder(int folder)
    {
        mJournal(QStringLiteral("GetDefaultFolder(%1)").arg(folder));
        if (mDraftsFailures != 0) {
            if (mDraftsFailures > 0)
                --mDraftsFailures;
            Raise(-2147221233, QStringLiteral("Fake"), QStringLiteral("The attempted operation failed."));
        }
        return mDrafts;
    }

private:
    Journal& mJournal;
    QObject* mDrafts;
    int& mDraftsFailures;
};

class FakeAddinObject : public QObject {
    Q_OBJECT
public:
    FakeAddinObject(QObject* parent, QObject* trusted) : QObject(parent), mTrusted(trusted) {}
    Q_INVOKABLE QObject* GetTrustedOutlookAppObject() { return mTrusted; }

private:
    QObject* mTrusted;
};

class FakeAddin : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool Connect READ Connect WRITE SetConnect)
    Q_PROPERTY(QObject* object MEMBER object)
public:
    FakeAddin(QObject* parent, Journal& journal, bool failConnect) : QObject(parent), mJournal(journal), mFailConnect(failConnect) {}
    bool Connect() const { return true; }
    void SetConnect(bool value)
    {
        mJournal(QStringLiteral("Addin.Connect=%1").arg(value));
        FailIf(mFailConnect, static_cast<int>(0x80004005u));
    }
    QObject* object = nullptr;

private:
    Journal& mJournal;
    bool mFailConnect;
};

class FakeAddins : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    Q_INVOKABLE QObject* Item(const QString& name)
    {
        if (!addin || name != QLatin1String("ZqSystemsOutlookEmailAddin.Connect"))
            Raise(9);
        return addin;
    }
    QObject* addin = nullptr;
};

// Outlook.Application; with `trusted`, the add-in hands out that object as the trusted one.
class FakeOutlook : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString Version MEMBER version)
    Q_PROPERTY(QObject* COMAddIns MEMBER addins)
public:
    FakeOutlook(Journal& journal, QString version_) : version(std::move(version_)), mJournal(journal),
        addins(new FakeAddins(this)) {}
    // Installs the add-in; its trusted application is a second Outlook object of its own.
    FakeOutlook* UseAddin(bool failConnect)
    {
        auto* trusted = new FakeOutlook(mJournal, version);
        trusted->setParent(this);
        trusted->name = QStringLiteral("trusted");
        trusted->switches = switches;
        auto* addin = new FakeAddin(this, mJournal, failConnect);
        addin->object = new FakeAddinObject(addin, trusted);
        static_cast<FakeAddins*>(addins)->addin = addin;
        return trusted;
    }
    Q_INVOKABLE QObject* GetNamespace(const QString& type)
    {
        mJournal(name + QStringLiteral(".GetNamespace(") + type + QLatin1Char(')'));
        return new FakeNamespace(this, mJournal, switches, draftsFailures);
    }
    Q_INVOKABLE QObject* CreateItem(int type)
    {
        mJournal(name + QStringLiteral(".CreateItem(%1)").arg(type));
        return new FakeMailItem(this, mJournal, switches);
    }

    QString version;
    QString name = QStringLiteral("app");
    OutlookSwitches switches;
    int draftsFailures = 0;  // -1: the Drafts folder never opens

private:
    Journal& mJournal;

public:
    QObject* addins;
};

class FakeRichText : public QObject {
    Q_OBJECT
public:
    FakeRichText(QObject* parent, Journal& journal) : QObject(parent), mJournal(journal) {}
    Q_INVOKABLE void AppendText(const QString& text) { mJournal(QStringLiteral("AppendText(") + text + QLatin1Char(')')); }
    Q_INVOKABLE void EmbedObject(int type, const QString& cls, const QString& source)
    {
        // The staging folder must be the user's alone while the file sits in it.
        const auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup
                            | QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
        const bool privateFolder = (QFileInfo(QFileInfo(source).absolutePath()).permissions() & others) == 0;
        mJournal(QStringLiteral("EmbedObject(%1,%2,%3) file there: %4, private: %5")
                     .arg(type).arg(cls, source).arg(QFileInfo::exists(source)).arg(privateFolder));
    }

private:
    Journal& mJournal;
};

class FakeNotesDocument : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString Form READ Empty WRITE SetForm)
    Q_PROPERTY(QString Subject READ Empty WRITE SetSubject)
    Q_PROPERTY(QString SendTo READ Empty WRITE SetSendTo)
    Q_PROPERTY(bool SaveMessageOnSend READ False WRITE SetSaveMessageOnSend)
public:
    FakeNotesDocument(QObject* parent, Journal& journal) : QObject(parent), mJournal(journal) {}
    QString Empty() const { return {}; }
    bool False() const { return false; }
    void SetForm(const QString& v) { mJournal(QStringLiteral("Form=") + v); }
    void SetSubject(const QString& v) { mJournal(QStringLiteral("Subject=") + v); }
    void SetSendTo(const QString& v) { mJournal(QStringLiteral("SendTo=") + v); }
    void SetSaveMessageOnSend(bool v) { mJournal(QStringLiteral("SaveMessageOnSend=%1").arg(v)); }
    Q_INVOKABLE QObject* CreateRichTextItem(const QString& name)
    {
        mJournal(QStringLiteral("CreateRichTextItem(") + name + QLatin1Char(')'));
        return new FakeRichText(this, mJournal);
    }
    Q_INVOKABLE void Save() { mJournal(QStringLiteral("Save")); }
    Q_INVOKABLE void Send() { mJournal(QStringLiteral("Send")); }

private:
    Journal& mJournal;
};

class FakeNotesDatabase : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool IsOpen MEMBER isOpen)
public:
    FakeNotesDatabase(QObject* parent, Journal& journal) : QObject(parent), mJournal(journal) {}
    Q_INVOKABLE void OpenMail()
    {
        mJournal(QStringLiteral("OpenMail"));
        isOpen = opens;
    }
    Q_INVOKABLE QObject* CreateDocument()
    {
        mJournal(QStringLiteral("CreateDocument"));
        return new FakeNotesDocument(this, mJournal);
    }
    bool isOpen = false;
    bool opens = true;

private:
    Journal& mJournal;
};

class FakeNotesSession : public QObject {
    Q_OBJECT
public:
    explicit FakeNotesSession(Journal& journal) : database(new FakeNotesDatabase(this, journal)), mJournal(journal) {}
    Q_INVOKABLE QObject* GetDatabase(const QString& server, const QString& file)
    {
        mJournal(QStringLiteral("GetDatabase(%1,%2)").arg(server, file));
        return database;
    }
    FakeNotesDatabase* database;

private:
    Journal& mJournal;
};

}  // namespace korvex::test
