#include "app/folder_panel.hpp"

#include <QFileInfo>
#include <QFileSystemModel>
#include <QIdentityProxyModel>
#include <deque>

namespace tidewell {

namespace {

std::deque<std::optional<QString>>& queuedChoices() {
    static std::deque<std::optional<QString>> choices;
    return choices;
}

std::optional<FolderPanelRequest>& lastPanelRequest() {
    static std::optional<FolderPanelRequest> request;
    return request;
}

// Greys out the folders the request does not offer; files never show, since only folders can be chosen.
class EnablingModel final : public QIdentityProxyModel {
public:
    EnablingModel(std::function<bool(const QString&)> offers, QObject* parent)
        : QIdentityProxyModel(parent), m_offers(std::move(offers)) {}

    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override {
        Qt::ItemFlags flags = QIdentityProxyModel::flags(index);
        const QString path = index.data(QFileSystemModel::FilePathRole).toString();
        if (!path.isEmpty() && m_offers && !m_offers(path)) {
            flags &= ~(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
        }
        return flags;
    }

private:
    std::function<bool(const QString&)> m_offers;
};

} // namespace

QString comparablePath(const QString& path) {
    const QString real = QFileInfo(path).canonicalFilePath();
    return real.isEmpty() ? QDir::cleanPath(path) : real;
}

FolderPanel::FolderPanel(FolderPanelRequest request, QWidget* parent)
    : QFileDialog(parent), m_request(std::move(request)) {
    // Qt's own dialog rather than the desktop's: only it lets Tidewell grey out folders and refuse a choice.
    setOption(QFileDialog::DontUseNativeDialog);
    setOption(QFileDialog::ShowDirsOnly);
    setFileMode(QFileDialog::Directory);
    setAcceptMode(QFileDialog::AcceptOpen);
    setLabelText(QFileDialog::Accept, m_request.prompt);
    setWindowTitle(m_request.message);
    setProxyModel(new EnablingModel(m_request.offers, this));
    setDirectory(m_request.startFolder);
}

QString FolderPanel::chosenFolder() const {
    const QStringList files = selectedFiles();
    return files.isEmpty() ? QString() : files.front();
}

void FolderPanel::accept() {
    const QString folder = chosenFolder();
    if (!folder.isEmpty() && (!m_request.accepts || m_request.accepts(folder))) {
        QFileDialog::accept();
    }
}

std::optional<QString> FolderPanel::choose(const FolderPanelRequest& request, QWidget* parent) {
    lastPanelRequest() = request;
    if (!queuedChoices().empty()) {
        std::optional<QString> choice = queuedChoices().front();
        queuedChoices().pop_front();
        if (choice && request.accepts && !request.accepts(*choice)) {
            return std::nullopt;
        }
        return choice;
    }
    FolderPanel panel(request, parent);
    panel.setWindowModality(Qt::ApplicationModal);
    if (panel.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return panel.chosenFolder();
}

void FolderPanel::answerNextPanel(std::optional<QString> folder) {
    queuedChoices().push_back(std::move(folder));
}

const std::optional<FolderPanelRequest>& FolderPanel::lastRequest() {
    return lastPanelRequest();
}

void FolderPanel::resetSeam() {
    queuedChoices().clear();
    lastPanelRequest().reset();
}

} // namespace tidewell
