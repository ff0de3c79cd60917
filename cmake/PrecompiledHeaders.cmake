# More than a third of the time of a build without optimisation goes into the standard library's headers. Only for
# builds beside others: in this one a file compiles without the headers that it fails to include.
target_precompile_headers(Text PRIVATE <algorithm> <chrono> <condition_variable> <filesystem> <functional> <map>
  <memory> <mutex> <optional> <set> <span> <string> <string_view> <thread> <utility> <vector>)

# Their own compiler flags do not fit.
set(SR_NOT_PRECOMPILED Text DesktopIntegration DomLib)

# The libraries of a folder and of those below it.
function(sr_reuse_precompiled_headers folder)
  get_property(targets DIRECTORY ${folder} PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(type ${target} TYPE)
    if(type MATCHES "^(STATIC|SHARED)_LIBRARY$" AND NOT target IN_LIST SR_NOT_PRECOMPILED)
      target_precompile_headers(${target} REUSE_FROM Text)
    endif()
  endforeach()
  get_property(folders DIRECTORY ${folder} PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders)
    sr_reuse_precompiled_headers(${below})
  endforeach()
endfunction()
sr_reuse_precompiled_headers(${CMAKE_SOURCE_DIR}/src)
sr_reuse_precompiled_headers(${CMAKE_SOURCE_DIR}/mac/ServiceRecords/ServiceRecords)
