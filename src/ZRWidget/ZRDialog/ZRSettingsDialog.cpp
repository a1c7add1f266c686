#include "ZRSettingsDialog.h"

#include "ZRConfigure.h"
#include "ZRNamedChild.h"

#include <QComboBox>
#include <QLabel>

#include <iterator>

namespace {
constexpr char buildDate[] = "20240319";

constexpr Qt::Alignment nameAlignment = Qt::AlignRight | Qt::AlignVCenter;
constexpr Qt::Alignment valueAlignment = Qt::AlignLeft | Qt::AlignVCenter;

// The choices by index.
struct Language {
    const char *code;
    const char *text;
};
constexpr Language languages[] = {{"en", "English"}, {"cn", "Chinese"}};
constexpr const char *hardwareTexts[] = {"On", "Off"};

// The rows of the form. Values start in the middle of the dialog, names at `nameX`, which is one
// pixel off its column in the last; both are half as wide as the dialog, but a combo box is smaller
// and hangs lower.
struct Row {
    const char *name;
    int nameX;
    int y;
    bool comboBox;
};
constexpr Row rows[] = {
    {"System Version", 0, 30, false},
    {"Build Date", 0, 70, false},
    {"Language", 0, 110, true},
    {"Hardware", 1, 150, true},
};
}

ZRSettingsDialog::ZRSettingsDialog(QWidget *parent) :
    ZRDialog(parent),
    versionNameLabel(namedChild<QLabel>(this, "versionNameLabel")),
    versionLabel(namedChild<QLabel>(this, "versionLabel")),
    buildDateNameLabel(namedChild<QLabel>(this, "buildDateNameLabel")),
    buildDateLabel(namedChild<QLabel>(this, "buildDateLabel")),
    languageLabel(namedChild<QLabel>(this, "languageLabel")),
    languageComboBox(namedChild<QComboBox>(this, "languageComboBox")),
    hardwareLabel(namedChild<QLabel>(this, "hardwareLabel")),
    hardwareComboBox(namedChild<QComboBox>(this, "hardwareComboBox"))
{
    for (QLabel *label : {buildDateNameLabel, languageLabel, hardwareLabel})
        label->setAlignment(nameAlignment);
    buildDateLabel->setAlignment(valueAlignment);
    buildDateLabel->setText(buildDate);
    addItems();
    selectStoredSettings();
    onLanguageChanged();
    resize(400, 200);
}

ZRSettingsDialog::~ZRSettingsDialog() = default;

void ZRSettingsDialog::addItems()
{
    for (const Language &language : languages)
        languageComboBox->addItem(translate(language.text));
    connect(languageComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(onLanguageChanged(int)));
    for (const char *text : hardwareTexts)
        hardwareComboBox->addItem(translate(text));
    connect(hardwareComboBox, SIGNAL(currentIndexChanged(int)), this, SLOT(onHardwareChanged(int)));
}

// The slots are connected already: selecting index 1 runs them, index 0 is selected anyway.
void ZRSettingsDialog::selectStoredSettings()
{
    const ZRConfigure configure;
    const bool chinese = configure.language().compare("cn", Qt::CaseInsensitive) == 0;
    languageComboBox->setCurrentIndex(chinese ? 1 : 0);
    hardwareComboBox->setCurrentIndex(configure.hardware() ? 0 : 1);
}

void ZRSettingsDialog::onLanguageChanged(int index)
{
    if (index < 0 || index >= int(std::size(languages)))
        return;
    // The name is as it was last given, with its suffix after start-up, so that the first choice
    // of the very language that shows reloads it once.
    const QString code = languages[index].code;
    if (code == languageFileName())
        return;
    switchLanguage(code);
    ZRConfigure().setLanguage(code);
}

void ZRSettingsDialog::onHardwareChanged(int index)
{
    ZRConfigure().setHardware(index == 0);
}

void ZRSettingsDialog::onLanguageChanged()
{
    QLabel *const names[] = {versionNameLabel, buildDateNameLabel, languageLabel, hardwareLabel};
    for (size_t i = 0; i < std::size(rows); ++i)
        names[i]->setText(QStringLiteral("%1 : ").arg(translate(rows[i].name)));
    versionNameLabel->setAlignment(nameAlignment);
    versionLabel->setAlignment(valueAlignment);
    versionLabel->setText(QStringLiteral(VORLYN_VERSION " IPTool"));
    for (int i = 0; i < int(std::size(languages)); ++i)
        languageComboBox->setItemText(i, translate(languages[i].text));
    for (int i = 0; i < int(std::size(hardwareTexts)); ++i)
        hardwareComboBox->setItemText(i, translate(hardwareTexts[i]));
}

void ZRSettingsDialog::resizeEvent(QResizeEvent *event)
{
    ZRDialog::resizeEvent(event);

    QWidget *const names[] = {versionNameLabel, buildDateNameLabel, languageLabel, hardwareLabel};
    QWidget *const values[] = {versionLabel, buildDateLabel, languageComboBox, hardwareComboBox};
    const int half = width() / 2;
    for (size_t i = 0; i < std::size(rows); ++i) {
        const Row &row = rows[i];
        names[i]->setGeometry(row.nameX, row.y, half, 30);
        values[i]->setGeometry(
            row.comboBox ? QRect(half, row.y + 5, 100, 20) : QRect(half, row.y, half, 30));
    }
}
