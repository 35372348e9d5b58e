#pragma once

#include "viewerform.h"

#include <array>

// "Visualisation des Icônes ": the found icons 70 to a page, each with its name, the pages turned
// as a timed show; copies every found file into a chosen folder.
class IconGalleryForm : public ViewerForm
{
    Q_OBJECT

public:
    static constexpr int kCells = 70;

    IconGalleryForm(FoundFiles &found, const Services &services, QWidget *parent = nullptr);

    void start() override;
    void copyAll();

    // Cell n from 1 to 70.
    QLabel *cellPicture(int n) const { return m_cellPictures[size_t(n - 1)]; }
    QLabel *cellCaption(int n) const { return m_captions[size_t(n - 1)]; }

private:
    void fillCell(int row, int cell);

    std::array<QLabel *, kCells> m_cellPictures{};
    std::array<QLabel *, kCells> m_captions{};
};
