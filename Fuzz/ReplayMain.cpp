#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>

#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const quint8 *bytes, std::size_t size);

// Runs the fuzz target over all files of the folders given. A failure is a crash, as it is when fuzzing.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    int count = 0;
    for (const QString &folder : application.arguments().mid(1)) {
        QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(file.fileName()));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const quint8 *>(bytes.constData()), std::size_t(bytes.size()));
            ++count;
        }
    }
    std::printf("%d inputs\n", count);
    return count > 0 ? 0 : 1;
}
