#pragma once

#include <QIcon>
#include <QPixmap>
#include <QString>
#include <string_view>

namespace tidewell {

/// The image of a section, from its "Img": either an application's path (the icon of the application whose presence
/// the section tests: "…/Safari.app", "…/Finder.app") or the name of a drawing of ours ("adult", "Browser_ext"). An
/// application we have no drawing for, and an empty value, give the generic application image.
[[nodiscard]] QString sectionImageName(std::string_view img);

/// One of Tidewell's own images by name ("promotion", "details_button", "adult_history", "browser_safari", …); a
/// name without an image gives the generic application image.
[[nodiscard]] QIcon namedImage(const QString& name);

/// namedImage drawn at size × size logical pixels, sharp on a high-density screen.
[[nodiscard]] QPixmap imagePixmap(const QString& name, int size, qreal devicePixelRatio = 1.0);

} // namespace tidewell
