#pragma once

#include <QString>

// The rows of the last search by extension, read by index while a viewer runs.
class FoundFiles
{
public:
    virtual ~FoundFiles() = default;
    virtual int count() const = 0;
    virtual QString name(int row) const = 0;       // the file name as found, e.g. "CASSE.ICO"
    virtual QString storedPath(int row) const = 0; // the stored path, e.g. "D:\ICONES\CASSE.ICO"
    virtual QString localPath(int row) const = 0;  // where it is on this machine; empty when the
                                                   // medium or the file is not there
};
