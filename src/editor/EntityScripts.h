// Which parameters of an entity hold scripts.
#pragma once

#include "scene/Entity.h"

// "commands", "script" and "dead_script" in any case, or any parameter named "On" and a capital.
bool IsScriptParameter(const EntityParameter& parameter);
