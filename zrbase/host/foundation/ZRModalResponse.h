#pragma once

// Responses of a modal session or panel: still running, stopped, aborted, and stopped with an error.
inline constexpr int ZRModalResponseStop = -1000;
inline constexpr int ZRModalResponseAbort = -1001;
inline constexpr int ZRModalResponseContinue = -1002;
inline constexpr int ZRModalResponseError = -999;
