#pragma once

#include <QWidget>

namespace tidewell {

/// A few lines on what the "Adult History" row removes and when, shown in a popover at the
/// row's info button.
class AdultHistoryInfoView : public QWidget {
    Q_OBJECT
public:
    explicit AdultHistoryInfoView(QWidget* parent = nullptr);

    static constexpr int kWidth = 290;
    [[nodiscard]] QSize sizeHint() const override;
};

} // namespace tidewell
