// What the leak check of the sanitizers is to pass over: the font library keeps its configuration until the program ends.
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig\n"; }
