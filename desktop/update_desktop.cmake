# Updates the desktop's databases after `files` were installed or removed. Does nothing for a staged installation
# (DESTDIR).
if("$ENV{DESTDIR}" STREQUAL "")
  foreach(file IN LISTS files)
    if(file MATCHES "^(.*/applications)/")
      execute_process(COMMAND update-desktop-database --quiet "${CMAKE_MATCH_1}" ERROR_QUIET)
    elseif(file MATCHES "^(.*/icons/hicolor)/scalable/")
      execute_process(COMMAND gtk-update-icon-cache --quiet --force --ignore-theme-index "${CMAKE_MATCH_1}" ERROR_QUIET)
    endif()
  endforeach()
endif()
