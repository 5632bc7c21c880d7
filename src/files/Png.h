// Writes PNG files, for people to look at. The system's own pictures are Targa and DDS (Picture.h).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// rgb: three bytes a pixel, rows from the top. False with a sentence that names the file and
// the reason; an older file then is as it was.
bool WritePng(const std::string& path, int width, int height, const std::vector<uint8_t>& rgb, std::string& error);
