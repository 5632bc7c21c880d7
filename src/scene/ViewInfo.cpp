#include "scene/ViewInfo.h"

#include "scene/Entity.h"

bool DisplayFilters::ShowsEntityType(const Entity& e) const {
    const std::string& type = e.str_type;
    return (show_lights || (type != "POINT_LIGHT" && type != "CORONA")) && (show_eyes || type != "VISIBILITY_EYE") &&
           (show_particles || type != "PARTICLE");
}
