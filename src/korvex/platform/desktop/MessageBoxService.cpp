// The message-box service: QMessageBox for applications, a recorder for tests.
#include "korvex/platform/desktop/MessageBoxService.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

namespace korvex {
namespace {

class QtMessageBoxService : public MessageBoxService {
public:
    int Show(const QString& prompt, int buttons, const QString& title, QWidget* owner) override
    {
        QMessageBox box(owner);
        box.setWindowTitle(title);
        box.setText(prompt);
        switch (buttons & 0x70) {
        case vbCritical: box.setIcon(QMessageBox::Critical); break;
        case vbQuestion: box.setIcon(QMessageBox::Question); break;
        case vbExclamation: box.setIcon(QMessageBox::Warning); break;
        case vbInformation: box.setIcon(QMessageBox::Information); break;
        default: break;
        }
        const QList<int> results = ButtonsOf(buttons);
        QList<QPushButton*> pushButtons;
        for (int result : results) {
            const auto standard = StandardButtonOf(result);
            pushButtons.append(box.addButton(standard));
        }
        const int defaultIndex = DefaultIndexOf(buttons, results.size());
        box.setDefaultButton(pushButtons[defaultIndex]);
        if (results.contains(vbCancel))
            box.setEscapeButton(pushButtons[results.indexOf(vbCancel)]);
        box.exec();
        const int clicked = pushButtons.indexOf(qobject_cast<QPushButton*>(box.clickedButton()));
        if (clicked < 0)
            return results.contains(vbCancel) ? vbCancel : results.first();
        return results[clicked];
    }

private:
    static QMessageBox::StandardButton StandardButtonOf(int result)
    {
        switch (result) {
        case vbCancel: return QMessageBox::Cancel;
        case vbAbort: return QMessageBox::Abort;
        case vbRetry: return QMessageBox::Retry;
        case vbIgnore: return QMessageBox::Ignore;
        case vbYes: return QMessageBox::Yes;
        case vbNo: return QMessageBox::No;
        default: return QMessageBox::Ok;
        }
    }

    static int DefaultIndexOf(int style, qsizetype count)
    {
        const int index = (style & 0xF00) / 256;
        return index < count ? index : 0;
    }
};

std::unique_ptr<MessageBoxService>& Slot()
{
    static std::unique_ptr<MessageBoxService> slot;
    return slot;
}

}  // namespace

MessageBoxService& MessageBoxService::Current()
{
    static QtMessageBoxService fallback;
    return Slot() ? *Slot() : fallback;
}

std::unique_ptr<MessageBoxService> MessageBoxService::Install(std::unique_ptr<MessageBoxService> service)
{
    std::swap(Slot(), service);
    return service;
}

QList<int> MessageBoxService::ButtonsOf(int style)
{
    switch (style & 0xF) {
    case vbOKCancel: return {vbOK, vbCancel};
    case vbAbortRetryIgnore: return {vbAbort, vbRetry, vbIgnore};
    case vbYesNoCancel: return {vbYes, vbNo, vbCancel};
    case vbYesNo: return {vbYes, vbNo};
    case vbRetryCancel: return {vbRetry, vbCancel};
    default: return {vbOK};
    }
}

int MessageBoxService::DefaultResultOf(int style)
{
    const QList<int> buttons = ButtonsOf(style);
    const int index = (style & 0xF00) / 256;
    return index < buttons.size() ? buttons[index] : buttons.first();
}

int MsgBox(const QString& prompt, int buttons, const QString& title, QWidget* owner)
{
    const QString shownTitle = title.isEmpty() ? QCoreApplication::applicationName() : title;
    return MessageBoxService::Current().Show(prompt, buttons, shownTitle, owner);
}

int RecordingMessageBoxService::Show(const QString& prompt, int buttons, const QString& title, QWidget* owner)
{
    shown.append({prompt, buttons, title, owner});
    if (!answers.isEmpty())
        return answers.takeFirst();
    return DefaultResultOf(buttons);
}

ScopedMessageBoxRecorder::ScopedMessageBoxRecorder()
{
    auto recorder = std::make_unique<RecordingMessageBoxService>();
    mRecorder = recorder.get();
    mPrevious = MessageBoxService::Install(std::move(recorder));
}

ScopedMessageBoxRecorder::~ScopedMessageBoxRecorder()
{
    MessageBoxService::Install(std::move(mPrevious));
}

}  // namespace korvex
