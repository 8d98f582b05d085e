#pragma once

#include <QWidget>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

// The host's own import or reference options, which its set-up command puts into the
// browser's options dialog: the file type, the namespace new nodes go into, and one switch
// per mode (group the imported nodes, lock the reference). Values live in option variables,
// so the next import or reference uses them.
class ThostFileOptionsPanel : public QWidget
{
    Q_OBJECT

public:
    enum class Mode { Import, Reference };

    ThostFileOptionsPanel(Mode mode, QWidget* parent);

    // "import" or "reference" in any case; false for anything else.
    static bool parseMode(const QString& text, Mode& mode);
    // The option variable holding the file type a mode starts from (the one the browser queries).
    static const char* fileTypeKey(Mode mode);

    Mode mode() const { return m_mode; }
    QString fileType() const;
    // Selects a known file type; returns false and changes nothing for an unknown one.
    bool setFileType(const QString& type);
    // The file the options are for; a file of a known type selects that type.
    void setFile(const QString& path);
    QString file() const { return m_file; }
    QString nameSpace() const;
    bool switchOn() const;

    // Reads the stored values into the panel, and writes the panel's values back.
    void load();
    void save() const;

private:
    Mode m_mode;
    QString m_file;
    QLabel* m_fileLabel;
    QComboBox* m_type;
    QLineEdit* m_nameSpace;
    QCheckBox* m_switch;
};
