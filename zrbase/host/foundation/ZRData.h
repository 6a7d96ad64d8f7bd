#pragma once

#include <cstdint>
#include <span>
#include <vector>

// Bytes owned by their holder; a view that does not own them is a std::span<const uint8_t>.
using ZRData = std::vector<uint8_t>;
