// A settings file: values are asked for, and one is set.
#include "foundation/Settings.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(settings, bytes) {
    static FuzzFolder folder;
    folder.NextInput("config/settings.json", bytes);
    RegistryClass store;
    if (!store.OpenKeyDirectory(SETTINGS_KEY))
        return;
    uint8_t raw[16];
    store.GetInteger("LightmapDetail", 1);
    store.GetText("RecentFile1", "");
    store.GetKeyValue("ToolbarState", raw, sizeof raw);
    const int detail = 3;
    if (store.SetKeyValue("LightmapDetail", &detail))
        Require(store.GetInteger("LightmapDetail", 1) == detail, "what was set is there");
}
