// SPDX-License-Identifier: MIT
#include "frmDecompiledDataDir.h"

#include "GamePaths.h"
#include "Latin1.h"
#include "Messages.h"
#include "PathText.h"
#include "WepnEditor_Main.h"

#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QWindow>

#include <limits>

namespace {

constexpr int px(int twips)
{
    return twips / 15;
}

} // namespace

frmDecompiledDataDir::frmDecompiledDataDir(WepnEditor_Main &main)
    // No parent: a child window would be disabled together with the main window.
    : QWidget(nullptr, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint
                           | Qt::MSWindowsFixedSizeDialogHint)
    , m_main(main)
{
    setObjectName(QStringLiteral("frmDecompiledDataDir"));
    setWindowTitle(QStringLiteral("Manage Directories"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_QuitOnClose, false);
    setFixedSize(px(4680), px(1935));

    txtDataDir = new QLineEdit(this);
    txtDataDir->setObjectName(QStringLiteral("txtDataDir"));
    txtDataDir->setMaxLength(std::numeric_limits<int>::max());
    txtDataDir->setGeometry(px(120), px(840), px(4455), px(315));

    lblInstructions = new QLabel(QStringLiteral("Please type in the location of your Korvath\\Data directory, e.g. "
                                                "C:\\Program Files\\Quellbrook\\Korvath\\Data, and then click OK."),
                                 this);
    lblInstructions->setObjectName(QStringLiteral("lblInstructions"));
    lblInstructions->setWordWrap(true);
    lblInstructions->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    lblInstructions->setGeometry(px(120), px(120), px(4335), px(615));

    cmdOK = new QPushButton(QStringLiteral("&OK"), this);
    cmdOK->setObjectName(QStringLiteral("cmdOK"));
    cmdOK->setGeometry(px(3360), px(1320), px(1215), px(495));
    connect(cmdOK, &QPushButton::clicked, this, &frmDecompiledDataDir::cmdOK_Click);

    setTabOrder(txtDataDir, cmdOK);

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
    // Taken as typed: no trimming, a trailing separator stays.
    const std::string typed = PathText::toBytes(txtDataDir->text());
    if (!m_main.FSO.FolderExists(typed)) {
        m_main.dialogs().message(Messages::folderNotFound(), {});
        return;
    }
    m_main.StoreDataDirectory(typed);
    close();
}

void frmDecompiledDataDir::Form_Unload()
{
    m_main.setEnabled(true);
}

void frmDecompiledDataDir::closeEvent(QCloseEvent *event)
{
    Form_Unload();
    event->accept();
}
