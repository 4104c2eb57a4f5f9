#include "tests/faults/crashmodel.h"

#include <QFile>

#include <algorithm>

using FileFaults::Record;

namespace {
constexpr int Gone = -1;
}

CrashModel::CrashModel(const Files &before, const FileFaults::Journal &journal)
{
    for (auto it = before.cbegin(); it != before.cend(); ++it) {
        present[it.key()] = addNode(it.value());
    }
    certain = present;
    for (int i = 0; i < journal.nRecords; ++i) {
        replay(journal.records[i]);
    }
}

int CrashModel::addNode(const QByteArray &content)
{
    nodes.append({content, content, content.size()});
    return int(nodes.size()) - 1;
}

/// The node that the record is about: known by its inode, or else by its name.
CrashModel::Node &CrashModel::nodeOf(const Record &record)
{
    const QString path = QFile::decodeName(record.path);
    if (!byInode.contains(record.nNode)) {
        byInode[record.nNode] = present.contains(path) ? present[path] : addNode({});
    }
    return nodes[byInode[record.nNode]];
}

void CrashModel::replay(const Record &record)
{
    const QString path = QFile::decodeName(record.path);
    const QString target = QFile::decodeName(record.target);
    switch (record.kind) {
    case Record::Created:
        byInode[record.nNode] = addNode({});
        change({{path, byInode[record.nNode]}});
        break;
    case Record::Written: {
        Node &node = nodeOf(record);
        node.content = QByteArray(record.content, record.nSize);
        node.nShortest = std::min(node.nShortest, node.content.size());
        break;
    }
    case Record::Truncated: {
        Node &node = nodeOf(record);
        node.content.resize(record.nSize, '\0');
        node.nShortest = std::min(node.nShortest, node.content.size());
        break;
    }
    case Record::Synced: {
        Node &node = nodeOf(record);
        node.synced = node.content;
        node.nShortest = node.content.size();
        break;
    }
    case Record::Renamed:
        change({{path, Gone}, {target, present.value(path, Gone)}});
        break;
    case Record::Unlinked:
        change({{path, Gone}});
        break;
    case Record::FolderSynced:
        pending.removeIf([&](const Change &names) {
            const bool bArrives = isIn(path, names);
            if (bArrives) {
                apply(certain, names);
            }
            return bArrives;
        });
        break;
    case Record::Marked:
        bMarked = true;
        break;
    }
}

void CrashModel::change(const Change &names)
{
    apply(present, names);
    pending.append(names);
}

void CrashModel::apply(Names &names, const Change &change)
{
    for (const auto &[path, nNode] : change) {
        if (nNode == Gone) {
            names.remove(path);
        } else {
            names[path] = nNode;
        }
    }
}

bool CrashModel::isIn(const QString &folder, const Change &change)
{
    return std::any_of(change.cbegin(), change.cend(),
                       [&](const auto &name) { return name.first.section(u'/', 0, -2) == folder; });
}

Files CrashModel::files(const Names &names, Sizes sizes) const
{
    Files result;
    for (auto it = names.cbegin(); it != names.cend(); ++it) {
        const Node &node = nodes[it.value()];
        result[it.key()] = sizes == Sizes::Certain ? node.synced : node.synced.left(node.nShortest);
    }
    return result;
}

Files CrashModel::killed() const
{
    Files result;
    for (auto it = present.cbegin(); it != present.cend(); ++it) {
        result[it.key()] = nodes[it.value()].content;
    }
    return result;
}

QList<Files> CrashModel::powerCuts() const
{
    QList<Files> cuts{files(present, Sizes::Arrived), files(certain, Sizes::Certain)};
    if (!pending.isEmpty()) {
        Names newest = certain;
        apply(newest, pending.constLast());
        cuts.append(files(newest, Sizes::Certain));
    }
    QList<Files> different;
    for (const Files &cut : std::as_const(cuts)) {
        if (!different.contains(cut)) {
            different.append(cut);
        }
    }
    return different;
}
