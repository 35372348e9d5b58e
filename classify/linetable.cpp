#include "linetable.h"

#include "dialogs.h"
#include "tablefile.h"

LineTable::LineTable(QString readPath, QString writePath)
    : m_readPath(std::move(readPath))
    , m_writePath(std::move(writePath))
{
}

void LineTable::load()
{
    m_lines = TableFile::read(m_readPath);
}

void LineTable::append(const QString &line)
{
    m_lines.append(line);
    save();
}

void LineTable::removeAt(qsizetype index)
{
    if (index >= 0 && index < m_lines.size())
        m_lines.removeAt(index);
    save();
}

void LineTable::save() const
{
    TableFile::write(m_writePath, m_lines);
}

bool removeAfterQuestion(LineTable &table, qsizetype index, Dialogs &dialogs, const QString &question)
{
    if (dialogs.question(question, QStringLiteral("Suppression de fichier "), kDemoHelp) != Answer::Yes)
        return false;
    table.removeAt(index);
    return true;
}
