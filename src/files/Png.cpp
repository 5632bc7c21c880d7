#include "files/Png.h"

#include <png.h>

#include "files/AtomicFile.h"

static bool EncodePng(int width, int height, const std::vector<uint8_t>& rgb, std::vector<uint8_t>& bytes,
                      std::string& reason) {
    if (width <= 0 || height <= 0 || rgb.size() != static_cast<size_t>(width) * static_cast<size_t>(height) * 3) {
        reason = "it has no pixels";
        return false;
    }
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    image.width = static_cast<png_uint_32>(width);
    image.height = static_cast<png_uint_32>(height);
    image.format = PNG_FORMAT_RGB;
    png_alloc_size_t size = PNG_IMAGE_PNG_SIZE_MAX(image);
    bytes.resize(size);
    if (png_image_write_to_memory(&image, bytes.data(), &size, 0, rgb.data(), 0, nullptr) == 0) {
        reason = image.message;
        return false;
    }
    bytes.resize(size);
    return true;
}

bool WritePng(const std::string& path, int width, int height, const std::vector<uint8_t>& rgb, std::string& error) {
    std::vector<uint8_t> bytes;
    std::string reason;
    if (EncodePng(width, height, rgb, bytes, reason)) {
        AtomicFile file(std::filesystem::path{path});
        if (file.Write(bytes.data(), bytes.size()) && file.Commit())
            return true;
        reason = file.GetError();
    }
    error = "\"" + path + "\" cannot be written: " + reason;
    return false;
}
