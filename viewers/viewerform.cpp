#include "viewerform.h"

#include "datadirectory.h"
#include "delayslider.h"
#include "dialogs.h"
#include "filecopy.h"
#include "folderpicker.h"
#include "foundfiles.h"
#include "viewerrules.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QToolButton>
#include <QVBoxLayout>

ViewerForm::ViewerForm(FoundFiles &found, const Services &services, int longestDelay, QWidget *parent)
    : Form(parent)
    , m_found(found)
    , m_data(services.data)
    , m_dialogs(services.dialogs)
    , m_folderPicker(services.folderPicker)
    , m_pictures(services.pictures)
    , m_show(services.clock)
{
    // A dialog-type window is transient for the search window it is opened from, so the window
    // manager keeps it above that window whatever boxes come and go.
    setWindowFlags((windowFlags() & ~Qt::WindowType_Mask) | Qt::Dialog);
    m_layout = new QVBoxLayout(this);

    m_currentFile = new QLabel(this);
    m_currentFile->setObjectName(QStringLiteral("currentFile"));
    m_currentFile->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_layout->addWidget(m_currentFile);

    auto *delayRow = new QHBoxLayout;
    auto *sliderCaption = new QLabel(QStringLiteral("Temps de défilement : 1 à %1 secondes ").arg(longestDelay), this);
    sliderCaption->setObjectName(QStringLiteral("sliderCaption"));
    m_slider = new DelaySlider(this);
    m_slider->setObjectName(QStringLiteral("delaySlider"));
    m_slider->setAccessibleName(QStringLiteral("Temps de défilement en secondes"));
    m_slider->setRange(1, longestDelay);
    m_slider->setValue(SlideShow::kInitialDelay);
    sliderCaption->setBuddy(m_slider);
    m_delay = new QLabel(m_show.delayText(), this);
    m_delay->setObjectName(QStringLiteral("delay"));
    m_delay->setMinimumWidth(24);
    delayRow->addWidget(sliderCaption);
    delayRow->addWidget(m_slider, 1);
    delayRow->addWidget(m_delay);
    m_layout->addLayout(delayRow);

    m_buttons = new QHBoxLayout;
    m_start = new QPushButton(QStringLiteral("Démarrer"), this);
    m_start->setObjectName(QStringLiteral("start"));
    m_pause = new QCheckBox(QStringLiteral("PAUSE"), this);
    m_pause->setObjectName(QStringLiteral("pause"));
    m_stop = new QCheckBox(QStringLiteral("STOP"), this);
    m_stop->setObjectName(QStringLiteral("stop"));
    m_buttons->addWidget(m_start);
    m_buttons->addWidget(m_pause);
    m_buttons->addWidget(m_stop);
    m_buttons->addStretch(1);
    m_layout->addLayout(m_buttons);

    auto *targets = new QHBoxLayout;
    m_targetFolder = new QLabel(this);
    m_targetFolder->setObjectName(QStringLiteral("targetFolder"));
    m_targetPath = new QLabel(this);
    m_targetPath->setObjectName(QStringLiteral("targetPath"));
    targets->addWidget(m_targetFolder, 1);
    targets->addWidget(m_targetPath, 2);
    m_layout->addLayout(targets);

    connect(m_start, &QPushButton::clicked, this, &ViewerForm::start);
    connect(m_slider, &QSlider::valueChanged, &m_show, &SlideShow::sliderMoved);
    connect(m_pause, &QCheckBox::toggled, &m_show, &SlideShow::setPaused);
    connect(m_stop, &QCheckBox::toggled, &m_show, &SlideShow::setStopped);
    connect(m_stop, &QCheckBox::clicked, this, [this](bool ticked) {
        if (ticked)
            dismiss();
    });
    connect(&m_show, &SlideShow::delayTextChanged, m_delay, &QLabel::setText);
    connect(&m_show, &SlideShow::sliderReset, m_slider, &QSlider::setValue);
    connect(&m_show, &SlideShow::pausedChanged, m_pause, &QCheckBox::setChecked);
    connect(&m_show, &SlideShow::stoppedChanged, m_stop, &QCheckBox::setChecked);
}

void ViewerForm::setViewArea(QWidget *area)
{
    m_layout->insertWidget(0, area, 1);
}

void ViewerForm::addButton(QWidget *button)
{
    m_buttons->insertWidget(m_buttons->count() - 1, button);
}

QToolButton *ViewerForm::makeCopyButton(const QString &caption)
{
    QToolButton *button = makePictureButton(caption, this);
    button->setText(caption);
    button->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_copyButtons.append(button);
    return button;
}

QToolButton *ViewerForm::addCopyAndPrintButtons(const QString &printHint)
{
    QToolButton *copyButton = makeCopyButton(QStringLiteral("Copier"));
    copyButton->setObjectName(QStringLiteral("copy"));
    addButton(copyButton);
    connect(copyButton, &QToolButton::clicked, this, &ViewerForm::copyCurrentFile);
    m_print = makePictureButton(printHint, this);
    m_print->setObjectName(QStringLiteral("print"));
    addButton(m_print);
    return m_print;
}

void ViewerForm::load()
{
    m_data.makeCurrent();
    for (QToolButton *button : std::as_const(m_copyButtons))
        loadButtonIcon(button, m_pictures, m_data.file(QStringLiteral("file005.ico")));
    if (m_print)
        loadButtonIcon(m_print, m_pictures, m_data.file(QStringLiteral("Inkjet.ico")));
    m_show.setDelayText(QString::number(SlideShow::kInitialDelay));
    m_slider->setValue(SlideShow::kInitialDelay);
}

void ViewerForm::dismiss()
{
    m_data.makeCurrent();
    m_show.dismiss();
    Form::reject();
}

void ViewerForm::reject()
{
    dismiss();
}

bool ViewerForm::showCurrentFile(int row)
{
    if (row >= m_found.count())
        return false;
    m_currentFile->setText(m_found.storedPath(row));
    m_currentLocalPath = m_found.localPath(row);
    return true;
}

void ViewerForm::copyCurrentFile()
{
    const std::optional<QString> folder = m_folderPicker.pickFolder();
    if (!folder) {
        m_dialogs.message(folderPickerCancelledText());
        return;
    }
    m_targetFolder->setText(ViewerRules::targetFolder(*folder));
    const QString question = ViewerRules::copyOneQuestion(m_currentFile->text(), m_targetFolder->text());
    if (m_dialogs.question(question, ViewerRules::copyTitle(), kDemoHelp) != Answer::Yes)
        return;
    m_targetPath->setText(m_targetFolder->text() + ViewerRules::storedFileName(m_currentFile->text()));
    if (!m_currentLocalPath.isEmpty())
        copyFileInto(m_currentLocalPath, m_targetFolder->text(), copiedFileName(m_currentFile->text()));
}
