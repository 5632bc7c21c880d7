// Pixels of a surface in the device's own format. For the sources of this room only.
#pragma once

#include "render/Textures.h"

uint32_t ReadPixel(const uint8_t* at, uint32_t pixelsize);
void WritePixel(uint8_t* at, uint32_t pixelsize, uint32_t pixel);
uint32_t PixelFromArgb(const CRTFormat& format, uint32_t argb);
uint32_t ArgbFromPixel(const CRTFormat& format, uint32_t pixel); // a channel that the format lacks reads as 0

// The picture halved: each block of two by two becomes its mean, rounded down a channel. width and height are those of
// the source and become those of the result, of which no side falls below 1.
std::vector<uint32_t> ReduceArgb(const uint32_t* argb, uint32_t& width, uint32_t& height);

// Fills all levels from a picture of this size (the stacked one of a cube map).
int FillMipLevels(uint32_t handle, const uint32_t* argb, uint32_t width, uint32_t height);

// The mean colour of level 0.
uint32_t ComputeAverageColor(const CRTexture& texture);
