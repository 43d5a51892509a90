# Writes the file `entry`, the desktop entry of the program at the absolute path `program`. Included,
# or by itself: cmake -D program=... -D entry=... -P desktop_entry.cmake

# Quoted where needed, and escaped twice: as a word of the command, then as a value of the file
# (freedesktop.org, Desktop Entry Specification 1.5, "The Exec key").
string(REPLACE "%" "%%" exec "${program}")
if(exec MATCHES "[^A-Za-z0-9_./%+-]")
    string(REGEX REPLACE "([\"`$\\\\])" "\\\\\\1" exec "${exec}")
    string(REPLACE "\\" "\\\\" exec "\"${exec}\"")
endif()
configure_file("${CMAKE_CURRENT_LIST_DIR}/com.brindlework.orvanta.desktop.in" "${entry}" @ONLY)
