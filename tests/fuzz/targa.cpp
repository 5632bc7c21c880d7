// A Targa picture; what was read is written and read again.
#include "files/Picture.h"
#include "fuzz/FuzzTarget.h"

FUZZ_TARGET(targa, bytes) {
    static FuzzFolder folder;
    folder.NextInput("in.tga", bytes);
    TGAInfoStruct info;
    TGAClass::GetImageInfo("in.tga", info);
    TGAClass picture, again;
    if (picture.LoadImage("in.tga") != PICTURE_OK || picture.SaveImage("out.tga") != PICTURE_OK)
        return;
    Require(again.LoadImage("out.tga") == PICTURE_OK, "a picture that was written can be read");
    Require(again.PixelData() == picture.PixelData(), "writing keeps the pixels");
}
