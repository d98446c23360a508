// SPDX-License-Identifier: MIT
#include "frmDecompiledDataDir.h"

#include "AppIcon.h"
#include "GamePaths.h"
#include "Latin1.h"
#include "Messages.h"
#include "PathText.h"
#include "WepnEditor_Main.h"

#include <QBoxLayout>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWindow>

#include <algorithm>
#include <limits>
#include <optional>

namespace {

constexpr int px(int twips)
{
    return twips / 15;
}

// "~" and "~/..." name the home folder, as in a shell.
QString expandHome(const QString &path)
{
    if (path == QLatin1String("~") || path.startsWith(QLatin1String("~/")))
        return QDir::homePath() + path.mid(1);
    return path;
}

} // namespace

frmDecompiledDataDir::frmDecompiledDataDir(WepnEditor_Main &main)
    // No parent: a child window would be disabled together with the main window.
    : QDialog(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint
                           | Qt::MSWindowsFixedSizeDialogHint)
    , m_main(main)
{
    setObjectName(QStringLiteral("frmDecompiledDataDir"));
    setWindowTitle(QStringLiteral("Manage Directories"));
    setWindowIcon(AppIcon::icon());
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);

    lblInstructions = new QLabel(QStringLiteral("Please type in the location of your Korvath\\Data directory, e.g. "
                                                "C:\\Program Files\\Quellbrook\\Korvath\\Data, and then click OK."),
                                 this);
    lblInstructions->setObjectName(QStringLiteral("lblInstructions"));
    lblInstructions->setWordWrap(true);
    lblInstructions->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    // The label is as high as its wrapped text needs in this font, at whatever scale.
    lblInstructions->setFixedWidth(px(4335));
    lblInstructions->setFixedHeight(std::max(px(615), lblInstructions->heightForWidth(px(4335))));

    txtDataDir = new QLineEdit(this);
    txtDataDir->setObjectName(QStringLiteral("txtDataDir"));
    txtDataDir->setMaxLength(std::numeric_limits<int>::max());
    txtDataDir->setMinimumWidth(px(4455));

    cmdBrowse = new QPushButton(QStringLiteral("&Browse..."), this);
    cmdBrowse->setObjectName(QStringLiteral("cmdBrowse"));
    cmdBrowse->setAutoDefault(false);
    connect(cmdBrowse, &QPushButton::clicked, this, &frmDecompiledDataDir::cmdBrowse_Click);

    cmdOK = new QPushButton(QStringLiteral("&OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setDefault(true);
    cmdOK->setMinimumSize(px(1215), px(495));
    connect(cmdOK, &QPushButton::clicked, this, &frmDecompiledDataDir::cmdOK_Click);
    // Escape, the close box and OK all end here.
    connect(this, &QDialog::finished, this, &frmDecompiledDataDir::Form_Unload);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(cmdBrowse);
    buttons->addWidget(cmdOK);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(px(120), px(120), px(120), px(120));
    layout->addWidget(lblInstructions);
    layout->addWidget(txtDataDir);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    setTabOrder(txtDataDir, cmdBrowse);
    setTabOrder(cmdBrowse, cmdOK);

    // Kept above the main window, and not a window of its own for quitting the application.
    winId();
    if (QWindow *mainWindow = m_main.windowHandle())
        windowHandle()->setTransientParent(mainWindow);
}

void frmDecompiledDataDir::Form_Load()
{
    if (m_main.FSO.FolderExists(m_main.strDataDir))
        txtDataDir->setText(PathText::toQString(m_main.strDataDir));
    else
        txtDataDir->setText(Latin1::toQString(GamePaths::kDefaultDataDir));
}

void frmDecompiledDataDir::cmdOK_Click()
{
    // Taken as typed (no trimming, a trailing separator stays), but for a leading "~", the home folder.
    const std::string typed = PathText::toBytes(expandHome(txtDataDir->text()));
    if (!m_main.FSO.FolderExists(typed)) {
        m_main.dialogs().message(Messages::folderNotFound(), {});
        return;
    }
    m_main.StoreDataDirectory(typed);
    accept();
}

void frmDecompiledDataDir::cmdBrowse_Click()
{
    if (const std::optional<QString> folder = m_main.dialogs().chooseFolder(expandHome(txtDataDir->text())))
        txtDataDir->setText(QDir::toNativeSeparators(*folder));
}

void frmDecompiledDataDir::Form_Unload()
{
    m_main.setEnabled(true);
}
