# What cpack reads first in a build without the program.
message(FATAL_ERROR "No package is made, because this build leaves out the program codetrans; ./install.sh builds it.")
