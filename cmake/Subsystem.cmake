# A subsystem folder src/<name>/ builds two static libraries:
#   core_<name>  from src/<name>/*.cpp     (Qt Core and Network only, no Widgets)
#   ui_<name>    from src/<name>/ui/*.cpp  (the screens; Widgets)
# Either may be absent when the folder has no such files yet.
function(bm_subsystem name)
  cmake_parse_arguments(ARG "" "" "CORE_DEPS;UI_DEPS" ${ARGN})
  file(GLOB core_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/*.h)
  file(GLOB ui_sources CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/ui/*.cpp ${CMAKE_CURRENT_SOURCE_DIR}/ui/*.h)
  add_library(core_${name} STATIC ${core_sources} ${CMAKE_SOURCE_DIR}/cmake/empty.cpp)
  target_include_directories(core_${name} PUBLIC ${CMAKE_SOURCE_DIR}/src)
  target_link_libraries(core_${name} PUBLIC Qt6::Core Qt6::Network ${ARG_CORE_DEPS} PRIVATE bm_warnings)
  add_library(ui_${name} STATIC ${ui_sources} ${CMAKE_SOURCE_DIR}/cmake/empty.cpp)
  target_link_libraries(ui_${name} PUBLIC core_${name} Qt6::Widgets ${ARG_UI_DEPS} PRIVATE bm_warnings)
endfunction()
