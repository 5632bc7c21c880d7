#include "commands/MainFrame.h"

void CMainFrame::OnDecals() {
    if (interface.editor_state == ES_DECAL) {
        interface.Cancel();
        return;
    }
    interface.SetEditorState(ES_DECAL);
    interface.ChangeCursor();
}
