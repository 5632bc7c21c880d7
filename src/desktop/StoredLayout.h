// Places and sizes of windows, kept with the settings.
#pragma once

#include <QByteArray>

QByteArray StoredLayout(const char* name); // empty if there is none
void StoreLayout(const char* name, const QByteArray& layout);
