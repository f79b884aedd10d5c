#pragma once
// The download of the ready-made index data: one GET of the archive, the bytes written whole to
// tmp.zip in the user's cache folder (it stays there after the run and is written anew by the
// next), and the archive unpacked over a folder with every extraction option at its default.

#include <QString>

class Inet;

class IndexDownload {
public:
    // Fetches through the connection object of the screen that runs the download.
    explicit IndexDownload(Inet& connection) : connection_(connection) {}

    // Fetches, writes and unpacks into `folder` as it stands (not trimmed). Returns the result of
    // the extraction, which the caller may ignore. A failed fetch, a reply other than 200, a failed
    // write of the archive and a failure of the extraction raise a Failure naming its cause; the
    // folder is not touched on any of them.
    qint32 Run(const QString& folder);

    // The address of the archive.
    static QString ArchiveUrl();
    // Where the fetched archive is kept: tmp.zip in the user's own cache folder, so that two users
    // of one machine never share it.
    static QString ArchivePath();

private:
    Inet& connection_;
};
