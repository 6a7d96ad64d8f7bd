#pragma once

#include <functional>

// Runs a function in a forked child process and answers whether it returned true there. Process-wide objects (the
// main bundle, the standard user defaults) start afresh in the child when the parent has not made them yet, and
// what the child changes never reaches the parent.
bool ZRTestRunInChildProcess(const std::function<bool()>& body);
