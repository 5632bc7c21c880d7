// A DDS picture, shown as a Targa.
#include "files/Picture.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(dds, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.dds", bytes);
    TGAInfoStruct info;
    TGAClass::GetImageInfo("in.dds", info);
    TGAClass picture;
    if (picture.LoadImage("in.dds") == PICTURE_OK && picture.GetImageInfo(info) == PICTURE_OK)
        Require(picture.PixelData().size() == size_t{info.width} * info.height * (info.pixel_size / 8u),
                "as many pixels as the header tells");
}
