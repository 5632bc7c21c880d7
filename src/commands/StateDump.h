// The state of the editor as JSON, with the names of the data model. Numbers read back exactly.
#pragma once

#include <string>
#include <vector>

#include "commands/ScriptDesktop.h"

class CInterface;

std::string DumpState(const CInterface& interface, const std::vector<ScriptDesktop::Message>& messages,
                      const std::string& completion);
