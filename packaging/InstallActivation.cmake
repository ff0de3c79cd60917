# Runs at install time, after the other files are in place: writes the files that hold the program's absolute path,
# then rebuilds the desktop's databases below the prefix.
set(prefix ${CMAKE_INSTALL_PREFIX})
cmake_path(ABSOLUTE_PATH prefix NORMALIZE)
string(REGEX REPLACE "/$" "" prefix "${prefix}")
set(SR_PROGRAM ${prefix}/${bundleFolder}/ServiceRecords)
set(SR_STORES_PROGRAM ${prefix}/${binFolder}/servicerecords-stores)

if(SR_PROGRAM MATCHES "[\"'`$%\\;]")
  message(FATAL_ERROR "The prefix ${prefix} holds a character that unit and desktop files reserve; choose another.")
endif()
if(SR_PROGRAM MATCHES " ")
  set(SR_PROGRAM "\"${SR_PROGRAM}\"")
  set(SR_STORES_PROGRAM "\"${SR_STORES_PROGRAM}\"")
endif()

function(install_configured template folder)
  cmake_path(GET template STEM LAST_ONLY name)
  configure_file(${sourceFolder}/${template} ${workFolder}/${name} @ONLY)
  file(INSTALL ${workFolder}/${name} DESTINATION ${prefix}/${folder}
    PERMISSIONS OWNER_READ OWNER_WRITE GROUP_READ WORLD_READ)
endfunction()

install_configured(dbus/com.morvane.Beacons.service.in ${dataFolder}/dbus-1/services)
install_configured(dbus/com.morvane.ServiceRecords.service.in ${dataFolder}/dbus-1/services)
install_configured(dbus/com.morvane.ServiceRecords.Stores.service.in ${dataFolder}/dbus-1/services)
install_configured(systemd/servicerecords.service.in lib/systemd/user)
install_configured(desktop/com.morvane.ServiceRecords.desktop.in ${dataFolder}/applications)
install_configured(desktop/com.morvane.ServiceRecords.Stores.desktop.in ${dataFolder}/applications)

# A package is unpacked elsewhere, and its databases are the business of the package manager there.
if(NOT "$ENV{DESTDIR}" STREQUAL "")
  return()
endif()

function(update_database program folder)
  find_program(path_${program} ${program})
  if(path_${program})
    execute_process(COMMAND ${path_${program}} ${folder}
      RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
    if(NOT status EQUAL 0)
      message(WARNING "${program} ${folder} failed: ${output}")
    endif()
  endif()
endfunction()

update_database(update-mime-database ${prefix}/${dataFolder}/mime)
update_database(update-desktop-database ${prefix}/${dataFolder}/applications)
# A cache that is older than the icons would hide them; without a cache they are found, too.
if(EXISTS ${prefix}/${dataFolder}/icons/hicolor/icon-theme.cache)
  update_database(gtk4-update-icon-cache ${prefix}/${dataFolder}/icons/hicolor)
endif()
