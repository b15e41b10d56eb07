#pragma once

#include "counter/ZellickViewController.h"
#include "platform/notifications.h"

namespace zellick {

// Drives the counter on the Qt event loop for the kill test: each round presses Add (with
// its release) 1 to 5 times, then resigns active (which saves) and becomes active again.
// Prints "stress: saved total N" to stdout, flushed, after each save. Quits the application
// after `iterations` rounds; 0 runs until the process is killed. Needs a running QCoreApplication.
void startStressLoop(ZellickViewController& c, NotificationCenter& n, int iterations);

}  // namespace zellick
