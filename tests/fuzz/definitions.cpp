// Entity definitions, and the definition of an actor.
#include "definitions/EntityParser.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(definitions, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.def", bytes);
    EntityParser parser("in.def");
    for (int t = 0; t < parser.GetTemplateCount(); ++t)
        Require(parser.GetTemplate(t, false) != nullptr, "each definition that is counted is there");
    LoadActor("in.def");
}
