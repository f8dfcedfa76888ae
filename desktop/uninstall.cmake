# Removes the files of the installation's `manifest`, and the `noted_folders` that nothing else has come to use.
file(STRINGS "${manifest}" files)
foreach(file IN LISTS files)
  file(REMOVE "$ENV{DESTDIR}${file}")
endforeach()

file(STRINGS "${noted_folders}" folders)
list(SORT folders ORDER DESCENDING)
foreach(folder IN LISTS folders)
  execute_process(COMMAND rmdir "${folder}" ERROR_QUIET)
endforeach()
file(REMOVE "${manifest}" "${noted_folders}")
