# wxWidgets as the set-up built it: the base and core archives, and the system libraries they call.
set(wx "${QUELLIX_WINDOWS_DEPS}/wx")
file(GLOB wx_core "${wx}/lib/libwx_mswu_core-*.a")
file(GLOB wx_base "${wx}/lib/libwx_baseu-*.a")
if(NOT wx_core OR NOT wx_base)
  message(FATAL_ERROR "${wx} holds no wxWidgets for Windows: run `make windows`")
endif()
set(wxWidgets_INCLUDE_DIRS "${wx}/include")
set(wxWidgets_DEFINITIONS __WXMSW__ _UNICODE UNICODE)
set(wxWidgets_LIBRARIES ${wx_core} ${wx_base}
  rpcrt4 oleaut32 ole32 uuid uxtheme winspool winmm shell32 shlwapi comctl32 comdlg32 advapi32
  version ws2_32 gdi32 msimg32 oleacc)
set(wxWidgets_FOUND TRUE)
