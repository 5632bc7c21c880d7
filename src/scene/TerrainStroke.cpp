#include "scene/TerrainStroke.h"

#include "scene/FrontEnd.h"

TerrainStroke::TerrainStroke(World& world) : record(world, "Terrain stroke.", ChangeScope::Added) {}

TerrainStroke::~TerrainStroke() { record.Discard(); }

void TerrainStroke::Touch(const Brush& segment) {
    if (touched.insert(segment.GetObjectID()).second)
        record.AddObject(segment);
}

void TerrainStroke::Commit() { record.Commit(); }

void World::BeginTerrainStroke() {
    if (!terrain_stroke && GetFrontEnd().IsFullUndo())
        terrain_stroke = std::make_unique<TerrainStroke>(*this);
}

void World::EndTerrainStroke() {
    if (const std::unique_ptr<TerrainStroke> stroke = std::move(terrain_stroke))
        stroke->Commit();
}

void AddTerrains(ChangeRecord& record, const World& world) {
    for (const auto& b : world.brush)
        if (b->type == BT_TERRAIN)
            record.AddObject(*b);
}
