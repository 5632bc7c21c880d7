#include "scene/FrontEnd.h"

namespace {
FrontEnd silent_front_end;
FrontEnd* current_front_end = &silent_front_end;
} // namespace

FrontEnd& GetFrontEnd() { return *current_front_end; }

void SetFrontEnd(FrontEnd* front_end) { current_front_end = front_end ? front_end : &silent_front_end; }
