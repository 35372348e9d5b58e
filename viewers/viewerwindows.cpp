#include "viewerwindows.h"

ImageViewerForm &ViewerWindows::pictures()
{
    if (!m_pictures)
        m_pictures = std::make_unique<ImageViewerForm>(m_found, m_services, m_printer, m_parent);
    return *m_pictures;
}

IconGalleryForm &ViewerWindows::icons()
{
    if (!m_icons)
        m_icons = std::make_unique<IconGalleryForm>(m_found, m_services, m_parent);
    return *m_icons;
}

TextViewerForm &ViewerWindows::texts()
{
    if (!m_texts)
        m_texts = std::make_unique<TextViewerForm>(m_found, m_services, m_printer, m_parent);
    return *m_texts;
}

void ViewerWindows::open(QWidget &window)
{
    // Modal: while a show runs, a new search cannot change the list under it.
    window.setWindowModality(Qt::ApplicationModal);
    window.show();
    window.raise();
    window.activateWindow();
}
