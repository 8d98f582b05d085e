#pragma once

#include <QLineEdit>

class QToolButton;
class TassetBrowserOptions;

// The search field of a content view: a borderless line edit with an inline clear button at
// its right end, shown exactly while there is text to clear.
class TcontentSearchBar : public QLineEdit
{
    Q_OBJECT

public:
    // options: scaling and the clear button's image; may be null. Not owned.
    explicit TcontentSearchBar(const TassetBrowserOptions* options, QWidget* parent = nullptr);
    ~TcontentSearchBar() override;

    QToolButton* clearButton() const { return m_clearButton; }

public Q_SLOTS:
    void onTextChanged(const QString& newText);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QToolButton* m_clearButton;
};
