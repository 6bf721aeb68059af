#pragma once

#include <QGuiApplication>
#include <QImage>
#include <string>

namespace dorix::testing {

/// An application that draws into memory. At the scale of QT_SCALE_FACTOR, or else at 1.
QGuiApplication& offscreenApplication();

/// Fails the test when the picture is not like the one that is kept under that name. Run with
/// DORIX_UPDATE_PICTURES set, the tests keep what they draw instead of comparing it.
void comparePicture(const QImage& image, const std::string& name);

}  // namespace dorix::testing
