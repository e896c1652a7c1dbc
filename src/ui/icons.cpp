#include "ui/icons.hpp"

#include <QFile>
#include <array>
#include <utility>

namespace tidewell {

namespace {

const QString kGenericImage = QStringLiteral("application");

// The applications whose presence a section tests, by their bundle's name.
constexpr std::array<std::pair<std::string_view, std::string_view>, 6> kApplicationImages{{
    {"Safari.app", "browser_safari"},
    {"Google Chrome.app", "browser_chrome"},
    {"Firefox.app", "browser_firefox"},
    {"Mail.app", "mail"},
    {"Adobe Flash Player Install Manager.app", "flash"},
    {"Finder.app", "system"},
}};

// The drawings a section's "Img" names by a name of its own.
constexpr std::array<std::pair<std::string_view, std::string_view>, 2> kDrawingImages{{
    {"adult", "adult_history"},
    {"Browser_ext", "browser_extensions"},
}};

QString latin1(std::string_view text) {
    return QString::fromLatin1(text.data(), static_cast<qsizetype>(text.size()));
}

QString resourceFor(const QString& name) {
    return QStringLiteral(":/icons/%1.svg").arg(name);
}

} // namespace

QString sectionImageName(std::string_view img) {
    for (const auto& [name, image] : kDrawingImages) {
        if (img == name) {
            return latin1(image);
        }
    }
    while (img.ends_with('/')) {
        img.remove_suffix(1);
    }
    const std::size_t slash = img.rfind('/');
    const std::string_view bundle = slash == std::string_view::npos ? img : img.substr(slash + 1);
    for (const auto& [name, image] : kApplicationImages) {
        if (bundle == name) {
            return latin1(image);
        }
    }
    return kGenericImage;
}

QIcon namedImage(const QString& name) {
    const QString file = resourceFor(name);
    return QIcon(QFile::exists(file) ? file : resourceFor(kGenericImage));
}

QPixmap imagePixmap(const QString& name, int size, qreal devicePixelRatio) {
    // Drawn from the vector at the screen's density rather than scaled from a small bitmap.
    const int pixels = qRound(size * devicePixelRatio);
    QPixmap pixmap = namedImage(name).pixmap(pixels, pixels);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    return pixmap;
}

} // namespace tidewell
