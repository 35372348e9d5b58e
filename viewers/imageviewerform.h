#pragma once

#include "viewerform.h"

#include <QImage>

class PictureFrame;
class Printer;

// "Visualisation des images:BMP,GIF,JPG,ICO,WMF,DIB,CUR ou EMF ": the found pictures one after
// another in the frame, each drawn by the fitting rule; copies the picture on show and prints it.
class ImageViewerForm : public ViewerForm
{
    Q_OBJECT

public:
    ImageViewerForm(FoundFiles &found, const Services &services, Printer &printer, QWidget *parent = nullptr);

    void start() override;
    void copy() { copyCurrentFile(); }
    void print();

    // The sizing box: the last picture that loaded, at its natural size.
    const QImage &sizingBox() const { return m_sizingBox; }
    PictureFrame *frame() const { return m_frame; }

private:
    void showPicture(int row);

    Printer &m_printer;
    QImage m_sizingBox;
    PictureFrame *m_frame = nullptr;
};
