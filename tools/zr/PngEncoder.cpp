#include "PngEncoder.h"

#include "ToolError.h"

#include <QBuffer>
#include <QByteArray>
#include <QImage>

namespace zr {

std::nullopt_t pngFailure(std::string_view reason, ZRErrorPtr* error)
{
    if (error)
        *error = toolError("Drawing the picture", reason);
    return std::nullopt;
}

std::optional<std::string> encodePng(const QImage& image, ZRErrorPtr* error)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    if (!image.save(&buffer, "PNG"))
        return pngFailure("the PNG encoder refused the picture", error);
    return std::string(bytes.constData(), size_t(bytes.size()));
}

}
