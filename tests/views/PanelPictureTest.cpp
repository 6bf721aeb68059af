#include "views/PanelGallery.h"
#include "views/Pictures.h"

#include <gtest/gtest.h>

namespace dorix::testing {
namespace {

/// The scale is the process's: run a second time with QT_SCALE_FACTOR at 2.
TEST(PanelPictureTest, EveryStateLooksAsItDid) {
    const bool isLarge = offscreenApplication().devicePixelRatio() == 2;
    for (const auto& picture : isLarge ? largePanelPictures() : panelPictures()) {
        comparePicture(drawPanel(picture), "panel-" + picture.name);
    }
}

}  // namespace
}  // namespace dorix::testing
