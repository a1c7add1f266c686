#include <QDir>
#include <QFile>
#include <QImage>
#include <QXmlStreamReader>
#include <QtTest>

#include <windows.h>

// What Windows reads of the program files without running them.
class tst_ProgramFiles : public QObject
{
    Q_OBJECT

private slots:
    void manifest_data() { programs(); }
    void manifest();
    void icon_data() { programs(); }
    void icon();
    void version_data() { programs(); }
    void version();
    void versionTexts_data() { programs(); }
    void versionTexts();
    void withoutConsole_data() { programs(); }
    void withoutConsole();

private:
    void programs();
};

namespace {

// A program file as data.
class ProgramFile
{
public:
    ProgramFile() :
        name(QString(QTest::currentDataTag()) + ".exe"),
        path(QDir::toNativeSeparators(QDir(VORLYN_PROGRAMS).filePath(name)).toStdWString()),
        module(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE))
    { }
    ~ProgramFile() { FreeLibrary(module); }

    QByteArray resource(LPCWSTR id, LPCWSTR type) const
    {
        const HRSRC found = FindResourceW(module, id, type);
        if (!found)
            return QByteArray();
        const auto *bytes = static_cast<const char *>(LockResource(LoadResource(module, found)));
        return QByteArray(bytes, int(SizeofResource(module, found)));
    }

    // Null without one. Windows stretches another size if the file hasn't this one.
    QImage icon(int side) const
    {
        HICON icon = nullptr;
        ICONINFO info = {};
        if (PrivateExtractIconsW(path.c_str(), 0, side, side, &icon, nullptr, 1, 0) != 1
            || !GetIconInfo(icon, &info))
            return QImage();
        BITMAPINFO format = {};
        format.bmiHeader = {sizeof format.bmiHeader, side, -side, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        QImage image(side, side, QImage::Format_ARGB32);
        const HDC context = GetDC(nullptr);
        GetDIBits(context, info.hbmColor, 0, UINT(side), image.bits(), &format, DIB_RGB_COLORS);
        ReleaseDC(nullptr, context);
        DeleteObject(info.hbmColor);
        DeleteObject(info.hbmMask);
        DestroyIcon(icon);
        return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    }

    QByteArray versionBlock() const
    {
        QByteArray block(int(GetFileVersionInfoSizeW(path.c_str(), nullptr)), '\0');
        const bool read = GetFileVersionInfoW(path.c_str(), 0, DWORD(block.size()), block.data());
        return read ? block : QByteArray();
    }

    const QString name;
    const std::wstring path;
    const HMODULE module;
};

// %1 is the program's name.
const char expectedManifest[] = R"(
asm.v1:assembly manifestVersion=1.0
  asm.v1:assemblyIdentity type=win32 name=%1 version=2.2.6.0
  asm.v3:trustInfo
    asm.v3:security
      asm.v3:requestedPrivileges
        asm.v3:requestedExecutionLevel level=requireAdministrator uiAccess=false
  compatibility.v1:compatibility
    compatibility.v1:application
      compatibility.v1:supportedOS Id={35138b9a-5d96-4fbd-8e2d-a2440225f93a}
      compatibility.v1:supportedOS Id={4a2f28e3-53b9-4441-ba9c-d69d4a4a6e38}
      compatibility.v1:supportedOS Id={1f676c76-80e1-4239-95bb-83d0f6d0da78}
      compatibility.v1:supportedOS Id={8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a})";

// The elements, each on a line below the one it stands in, with the end of its namespace; or why
// the manifest can't be read.
QString manifestText(const QByteArray &xml)
{
    QString text;
    int depth = 0;
    QXmlStreamReader reader(xml);
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        if (token == QXmlStreamReader::EndElement)
            --depth;
        if (token != QXmlStreamReader::StartElement)
            continue;
        const QString space = reader.namespaceUri().toString().remove("urn:schemas-microsoft-com:");
        text += '\n' + QString(2 * depth++, ' ') + space + ':' + reader.name().toString();
        for (const QXmlStreamAttribute &attribute : reader.attributes())
            text += ' ' + attribute.name().toString() + '=' + attribute.value().toString();
    }
    return reader.hasError() ? reader.errorString() : text;
}

QString versionText(const QByteArray &block, const QString &name)
{
    const std::wstring path = ("\\StringFileInfo\\040904b0\\" + name).toStdWString();
    void *text = nullptr;
    UINT length = 0;
    if (!VerQueryValueW(block.constData(), path.c_str(), &text, &length))
        return QString();
    return QString::fromWCharArray(static_cast<const wchar_t *>(text));
}

}

void tst_ProgramFiles::programs()
{
    QTest::addColumn<QString>("description");
    QTest::newRow("VorlynIPTool") << "Vorlyn IPTool";
    QTest::newRow("VorlynBench") << "Vorlyn Bench";
}

void tst_ProgramFiles::manifest()
{
    const ProgramFile file;
    QVERIFY(file.module);
    const QString name = QString(QTest::currentDataTag()).replace("Vorlyn", "Vorlyn.");
    const QByteArray manifest = file.resource(CREATEPROCESS_MANIFEST_RESOURCE_ID, RT_MANIFEST);
    QCOMPARE(manifestText(manifest), QString(expectedManifest).arg(name));
}

void tst_ProgramFiles::icon()
{
    const ProgramFile file;
    QVERIFY(file.module);
    QVERIFY(!file.resource(L"IDI_ICON1", RT_GROUP_ICON).isEmpty());
    for (int side : {16, 32, 48, 256}) {
        const QImage drawn(QStringLiteral(":/resources/app_%1.png").arg(side));
        QCOMPARE(drawn.width(), side);
        QCOMPARE(file.icon(side), drawn.convertToFormat(QImage::Format_ARGB32_Premultiplied));
    }
}

void tst_ProgramFiles::version()
{
    const QByteArray block = ProgramFile().versionBlock();
    void *info = nullptr;
    UINT length = 0;
    QVERIFY(VerQueryValueW(block.constData(), L"\\", &info, &length));
    const auto *fixed = static_cast<const VS_FIXEDFILEINFO *>(info);
    QCOMPARE(quint32(fixed->dwFileVersionMS), 2u << 16 | 2u);
    QCOMPARE(quint32(fixed->dwFileVersionLS), 6u << 16);
    QCOMPARE(fixed->dwProductVersionMS, fixed->dwFileVersionMS);
    QCOMPARE(fixed->dwProductVersionLS, fixed->dwFileVersionLS);
}

void tst_ProgramFiles::versionTexts()
{
    QFETCH(QString, description);
    const ProgramFile file;
    const QByteArray block = file.versionBlock();
    QCOMPARE(versionText(block, "CompanyName"), QString("Vorlyn"));
    QCOMPARE(versionText(block, "ProductName"), QString("Vorlyn IPTool"));
    QCOMPARE(versionText(block, "FileDescription"), description);
    QCOMPARE(versionText(block, "FileVersion"), QString("2.2.6"));
    QCOMPARE(versionText(block, "ProductVersion"), QString("2.2.6"));
    QCOMPARE(versionText(block, "OriginalFilename"), file.name);
    QCOMPARE(versionText(block, "InternalName"), QString(QTest::currentDataTag()));
}

void tst_ProgramFiles::withoutConsole()
{
    const ProgramFile program;
    QFile file(QString::fromStdWString(program.path));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.read(4096);
    const auto *dos = reinterpret_cast<const IMAGE_DOS_HEADER *>(bytes.constData());
    QCOMPARE(int(dos->e_magic), IMAGE_DOS_SIGNATURE);
    const auto *headers =
        reinterpret_cast<const IMAGE_NT_HEADERS64 *>(bytes.constData() + dos->e_lfanew);
    QCOMPARE(quint32(headers->Signature), quint32(IMAGE_NT_SIGNATURE));
    QCOMPARE(int(headers->FileHeader.Machine), IMAGE_FILE_MACHINE_AMD64);
    QCOMPARE(int(headers->OptionalHeader.Subsystem), IMAGE_SUBSYSTEM_WINDOWS_GUI);
}

QTEST_GUILESS_MAIN(tst_ProgramFiles)
#include "tst_ProgramFiles.moc"
