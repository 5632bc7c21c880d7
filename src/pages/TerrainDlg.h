// The dialog of the terrain generator, without its window.
#pragma once

#include <string>

#include "scene/Terrain.h"

class CInterface;

class TerrainDlg {
public:
    explicit TerrainDlg(CInterface& controller) : editor(controller) {}

    static constexpr const char* NO_MAP = "no texture";
    std::string m_heightmap = NO_MAP; // shown
    std::string heightmap;            // its path
    int m_size_x = 8192, m_size_y = 2048, m_size_z = 8192, m_seg_x = 8, m_seg_y = 8, m_detail = 128;

    void OnHeightmapbrowse();                   // asks for a file
    bool SetHeightmap(const std::string& path); // false after a box: not 8 bits per pixel, or not a picture
    bool OnOK();                                // makes the terrain; false after a box: the dialog stays
    TerrainShape Shape() const;

private:
    CInterface& editor;
};
