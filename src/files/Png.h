// Writes PNG files, for people to look at. The system's own pictures are Targa and DDS (Picture.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// rgb: three bytes a pixel, rows from the top. The path is a real one. False when the file cannot be written.
bool WritePng(const std::string& path, int width, int height, const std::vector<uint8_t>& rgb);
