// Message boxes with the host language's button, icon and default-button flags and result
// codes. Applications show QMessageBox; tests install a recorder that keeps every prompt, title
// and style and answers from a script, so exact texts can be asserted without a person.
#pragma once

#include <QList>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>

namespace korvex {

enum VbMsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbAbortRetryIgnore = 2,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbRetryCancel = 5,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
    vbDefaultButton1 = 0,
    vbDefaultButton2 = 256,
    vbDefaultButton3 = 512,
    vbApplicationModal = 0,
    vbSystemModal = 4096,
};

enum VbMsgBoxResult : int { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbIgnore = 5, vbYes = 6, vbNo = 7 };

class MessageBoxService {
public:
    virtual ~MessageBoxService() = default;
    // Shows the box (owned by `owner` when given) and returns the button pressed.
    virtual int Show(const QString& prompt, int buttons, const QString& title, QWidget* owner) = 0;

    // The service in use; QMessageBox unless another was installed.
    static MessageBoxService& Current();
    // Installs a service and returns the previous one (nullptr for the built-in default).
    static std::unique_ptr<MessageBoxService> Install(std::unique_ptr<MessageBoxService> service);

    // The buttons a style shows, in order, as result codes.
    static QList<int> ButtonsOf(int style);
    // The result of the default button of a style.
    static int DefaultResultOf(int style);
};

// MsgBox: an empty title shows the application's title.
int MsgBox(const QString& prompt, int buttons = vbOKOnly, const QString& title = {}, QWidget* owner = nullptr);

// Keeps what was shown and answers from a script; an exhausted script presses the default
// button.
class RecordingMessageBoxService : public MessageBoxService {
public:
    struct Shown {
        QString prompt;
        int buttons = 0;
        QString title;
        QPointer<QWidget> owner;
    };

    int Show(const QString& prompt, int buttons, const QString& title, QWidget* owner) override;

    QList<Shown> shown;
    QList<int> answers;
};

// Installs a recorder for the life of a scope (a test), restoring the previous service after.
class ScopedMessageBoxRecorder {
public:
    ScopedMessageBoxRecorder();
    ~ScopedMessageBoxRecorder();
    ScopedMessageBoxRecorder(const ScopedMessageBoxRecorder&) = delete;
    ScopedMessageBoxRecorder& operator=(const ScopedMessageBoxRecorder&) = delete;

    RecordingMessageBoxService& recorder() { return *mRecorder; }
    const QList<RecordingMessageBoxService::Shown>& shown() const { return mRecorder->shown; }

private:
    RecordingMessageBoxService* mRecorder;
    std::unique_ptr<MessageBoxService> mPrevious;
};

}  // namespace korvex
