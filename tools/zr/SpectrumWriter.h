#pragma once

#include "Spectrogram.h"

#include <zrbase/core/ZRError.h>

#include <optional>
#include <string>
#include <vector>

namespace zr {

// The average spectrum as CSV: a header line, then "frequency_hz,magnitude_dbfs" for every bin from 1 up.
std::string spectrumCsv(const std::vector<double>& magnitude, double binWidth);
// The average spectrum drawn on a logarithmic frequency axis and a dBFS axis from 0 down to `floorDb`.
std::optional<std::string> spectrumPng(const std::vector<double>& magnitude, double binWidth, uint32_t width,
    uint32_t height, double floorDb, ZRErrorPtr* error = nullptr);
// The spectrogram, time from left to right and log frequency upwards, levels from `floorDb` (black) to 0 dBFS
// (white).
std::optional<std::string> spectrogramPng(const Spectrogram& spectrogram, double floorDb, ZRErrorPtr* error = nullptr);

}
