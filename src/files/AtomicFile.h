// The one way to write a file of this system; it stands in foundation, where the settings need it too.
#pragma once

#include "foundation/AtomicFile.h" // IWYU pragma: export
