#pragma once

#include <functional>

// Runs `work` to its end on a thread with a stack of 512 KiB, which an instrumented build gets by
// with too, and which a call for each of a million levels does not.
void onSmallStack(const std::function<void()>& work);
