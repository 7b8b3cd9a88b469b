// Application-wide mouse and keyboard hooks for the user-interface thread: an event filter on
// the application that shows every mouse-button press and key press to the hook owner before
// the widget gets it. One owner at a time; installing for a new owner takes the hooks over.
// The floating drop-down uses them to close on outside clicks and on Enter, Escape and Tab.
#pragma once

#include <QKeyEvent>
#include <QMouseEvent>
#include <QObject>
#include <QWidget>

#include <functional>

namespace korvex {

class ThreadHooks {
public:
    // Return true to consume the event (the widget then never sees it). A consumed press takes
    // its release with it, whoever owns the hooks by then, so that no click reaches the widget.
    using MouseProc = std::function<bool(QWidget* target, QMouseEvent* event)>;
    using KeyboardProc = std::function<bool(QWidget* target, QKeyEvent* event)>;

    // Removes any installed hooks, then installs these for `owner`.
    static void Install(QObject* owner, MouseProc mouse, KeyboardProc keyboard);
    // Removes the hooks whoever owns them.
    static void Remove();
    // The current owner, nullptr when no hooks are installed (or the owner is gone).
    static QObject* Owner();
};

}  // namespace korvex
