#pragma once

#include "icongalleryform.h"
#include "imageviewerform.h"
#include "textviewerform.h"

#include <memory>

// The three viewers over one list of found files, created on first use and kept, as the search
// window opens them from its class buttons: connect picturesViewerRequested() to showPictures(),
// and so on.
class ViewerWindows
{
public:
    ViewerWindows(FoundFiles &found, const ViewerForm::Services &services, Printer &printer, QWidget *parent)
        : m_found(found), m_services(services), m_printer(printer), m_parent(parent) {}

    ImageViewerForm &pictures();
    IconGalleryForm &icons();
    TextViewerForm &texts();

    void showPictures() { open(pictures()); }
    void showIcons() { open(icons()); }
    void showTexts() { open(texts()); }

private:
    static void open(QWidget &window);

    FoundFiles &m_found;
    ViewerForm::Services m_services;
    Printer &m_printer;
    QWidget *m_parent;
    std::unique_ptr<ImageViewerForm> m_pictures;
    std::unique_ptr<IconGalleryForm> m_icons;
    std::unique_ptr<TextViewerForm> m_texts;
};
