#pragma once

#include <string>

namespace zr {

// A duration as the library's time formatter shows it in hours, minutes, seconds and milliseconds (0:00:03.000).
std::string durationText(double seconds);

}
