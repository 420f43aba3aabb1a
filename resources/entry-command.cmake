# quennel_quote(NAME PATH): the path as one word of a command in a D-Bus service file or a desktop entry.
# In quotes only where it has to be: not every launcher understands them. Within them some characters
# need a backslash, which the files' own rules then want doubled.
function(quennel_quote name path)
  set(quoted "${path}")
  if(NOT path MATCHES "^[A-Za-z0-9/._+:@,%-]*$")
    string(REPLACE "\\" "\\\\\\\\" quoted "${quoted}")
    foreach(character IN ITEMS "\"" "`" "$")
      string(REPLACE "${character}" "\\\\${character}" quoted "${quoted}")
    endforeach()
    set(quoted "\"${quoted}\"")
  endif()
  set(${name} "${quoted}" PARENT_SCOPE)
endfunction()

# quennel_configure_entries(SOURCE FOLDER EXECUTABLE DESKTOP_FILE SERVICE_FILE): writes the desktop entry
# and the D-Bus service file, which both name the executable by its absolute path: launchers drop an
# entry whose program is not found in their PATH.
function(quennel_configure_entries source folder executable desktop_file service_file)
  quennel_quote(QUENNEL_SERVICE_COMMAND "${executable}")
  string(REPLACE "%" "%%" QUENNEL_DESKTOP_COMMAND "${QUENNEL_SERVICE_COMMAND}")
  configure_file("${source}/${desktop_file}.in" "${folder}/applications/${desktop_file}" @ONLY)
  configure_file("${source}/${service_file}.in" "${folder}/dbus-1/services/${service_file}" @ONLY)
endfunction()
