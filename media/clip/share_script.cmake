# Makes C++ of the web element and the page around it: cmake -DWEB=web -DOUT=FILE -P share_script.cmake
# The element's modules become one script, without comments and indentation.
set(script "")
foreach(module geometry class parallax-photo)
    file(READ ${WEB}/element/${module}.js text)
    string(APPEND script "${text}")
endforeach()
string(REGEX REPLACE "/[*][*]([^*]|[*][^/])*[*]/" "" script "${script}")
string(REGEX REPLACE "\n *//[^\n]*" "" script "\n${script}")
string(REGEX REPLACE " +//[^\n\"'`]*\n" "\n" script "${script}")
string(REGEX REPLACE "\n(import|export) {[^\n]*" "" script "${script}")
string(REGEX REPLACE "\nexport " "\n" script "${script}")
string(REGEX REPLACE "\n[ \n]+" "\n" script "${script}")
string(TOLOWER "${script}" lower)
if(lower MATCHES "</script|<!--|\\)script\"")
    message(FATAL_ERROR "web/element: the script would end inside the page at ${CMAKE_MATCH_0}")
endif()
file(READ ${WEB}/share/page.html page)
file(WRITE ${OUT} "#include \"media/clip/share_script.h\"

const std::string_view quorvane::media::kShareScript = R\"script(${script})script\";
const std::string_view quorvane::media::kShareTemplate = R\"page(${page})page\";
")
