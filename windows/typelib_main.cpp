// tovik_typelib_idl OUT.idl: writes the type library's source.
#include <fstream>
#include <iostream>

#include "typelib_idl.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: tovik_typelib_idl OUT.idl\n";
    return 2;
  }
  std::ofstream out(argv[1], std::ios::binary);
  out << tovik::com::TypeLibraryIdl();
  return out ? 0 : 1;
}
