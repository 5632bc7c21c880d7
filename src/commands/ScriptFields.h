// The fields of the editor that a script sets by name.
#pragma once

#include <string>

class CInterface;

// value: a number, 0 or 1 for a flag, "x y z" for a vector or "r g b a" for a colour. False with a sentence, for an
// unknown name or a value that the field cannot have.
bool SetScriptField(CInterface& interface, const std::string& name, const std::string& value, std::string& error);
