// Window-less timers in the shape the library's rules use them (SetTimer / KillTimer): a
// callback after an interval, repeating until killed. One-shot use kills the timer in its own
// callback. Callbacks run on the user-interface thread between events.
#pragma once

#include <functional>

namespace korvex {

// Starts a repeating timer and returns its id (never 0).
int SetTimer(int intervalMilliseconds, std::function<void()> callback);
// A timer that fires once and then kills itself.
int SetSingleShotTimer(int intervalMilliseconds, std::function<void()> callback);
// Stops a timer; false when the id names no running timer. Safe inside the timer's callback.
bool KillTimer(int id);
bool TimerIsRunning(int id);

// Lets pending events run (the host language's DoEvents).
void DoEvents();

}  // namespace korvex
