#include "desktop/StoredLayout.h"

#include "foundation/Settings.h"

QByteArray StoredLayout(const char* name) {
    constexpr int MOST = 1 << 16;
    RegistryClass store;
    if (!store.OpenKeyDirectory(SETTINGS_KEY))
        return {};
    QByteArray bytes(MOST, '\0');
    bytes.resize(store.GetKeyValue(name, bytes.data(), MOST));
    return bytes;
}

void StoreLayout(const char* name, const QByteArray& layout) {
    RegistryClass store;
    if (store.OpenKeyDirectory(SETTINGS_KEY))
        store.SetKeyValue(name, layout.constData(), static_cast<int>(layout.size()));
}
