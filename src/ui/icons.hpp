#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>
#include <string_view>

namespace tidewell {

/// The image a section's "Img" names: "Img" holds either an application's path (the icon of the application whose
/// presence the section tests: "…/Safari.app", "…/Finder.app") or an image name of our own ("adult",
/// "Browser_ext"). An application path gives the image drawn for that application; an application we have no
/// drawing for, and an empty value, give the generic application image.
[[nodiscard]] QString imageNameForImg(std::string_view img);

/// One of Tidewell's own images by name ("Thornsweep", "DetatilsButton", "adult", "browser_safari", …); a name
/// without an image gives the generic application image.
[[nodiscard]] QIcon namedImage(const QString& name);

/// namedImage drawn at size × size logical pixels, sharp on a high-density screen.
[[nodiscard]] QPixmap imagePixmap(const QString& name, int size, qreal devicePixelRatio = 1.0);

} // namespace tidewell
