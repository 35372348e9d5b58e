#pragma once

#include "viewerform.h"

class Printer;
class QPlainTextEdit;

// "Kalvex2: Fichiers DIZ ou  TXT": the found text files one after another, whole; copies the file
// on show and prints its text with a chosen font and colour.
class TextViewerForm : public ViewerForm
{
    Q_OBJECT

public:
    TextViewerForm(FoundFiles &found, const Services &services, Printer &printer, QWidget *parent = nullptr);

    void start() override;
    void copy() { copyCurrentFile(); }
    void print();

    QPlainTextEdit *textBox() const { return m_text; }

private:
    Printer &m_printer;
    QPlainTextEdit *m_text = nullptr;
};
