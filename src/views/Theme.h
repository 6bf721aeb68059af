#pragma once

#include <QQmlPropertyMap>

namespace dorix {

/// The tokens by name, as the QML files see them under `theme`. Main thread.
class Theme {
 public:
    Theme();

    void setDark(bool dark);
    void setReducesMotion(bool reduces);
    /// Without a compositor nothing may be translucent.
    void setComposited(bool composited);

    bool isComposited() const { return map_.value("composited").toBool(); }
    QQmlPropertyMap& map() { return map_; }

 private:
    QQmlPropertyMap map_;
};

/// The families of the packages that the program depends on.
inline constexpr const char* textFont = "Inter";
inline constexpr const char* glyphFont = "Material Design Icons";

}  // namespace dorix
