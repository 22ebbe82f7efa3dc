#pragma once

#include <functional>

// Runs `work` on a thread with a stack of 512 KiB and waits for it. That is enough for a sanitizer
// build, but not for recursion over a million levels.
void runOnSmallStack(const std::function<void()>& work);
