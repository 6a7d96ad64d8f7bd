#pragma once

#include <zrbase/core/ZRError.h>

#include <optional>
#include <string>
#include <string_view>

class QImage;

namespace zr {

// The image as the bytes of a PNG file.
std::optional<std::string> encodePng(const QImage& image, ZRErrorPtr* error = nullptr);
// The failure of drawing a picture, for the reason given.
std::nullopt_t pngFailure(std::string_view reason, ZRErrorPtr* error);

}
