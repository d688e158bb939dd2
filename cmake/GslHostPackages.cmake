# For a build for another processor (CMAKE_PROJECT_INCLUDE): the packages of this machine are found, so that the whole
# tree is configured. Targets that link them cannot be built; the others can.
set(CMAKE_LIBRARY_ARCHITECTURE x86_64-linux-gnu)
