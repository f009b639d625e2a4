#include "export/LayerVisibility.h"

namespace quellix {

bool IsLayerVisible(SULayerRef su_layer) {
  bool visible = false;
  if (SULayerGetVisibility(su_layer, &visible) != SU_ERROR_NONE || !visible) return false;
  SULayerFolderRef su_folder = SU_INVALID;
  if (SULayerGetParentLayerFolder(su_layer, &su_folder) != SU_ERROR_NONE) return true;
  while (SUIsValid(su_folder)) {
    bool folderVisible = true;
    if (SULayerFolderGetVisibility(su_folder, &folderVisible) == SU_ERROR_NONE && !folderVisible) {
      return false;
    }
    SULayerFolderRef su_parent = SU_INVALID;
    if (SULayerFolderGetParentLayerFolder(su_folder, &su_parent) != SU_ERROR_NONE) return true;
    su_folder = su_parent;
  }
  return true;
}

}  // namespace quellix
