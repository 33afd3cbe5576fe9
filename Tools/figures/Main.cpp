// TQFigures <folder>: draws the figures of docs/ into the folder.

#include <cstdio>
#include <fstream>
#include <string>

#include "Figures.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: TQFigures <folder>\n", stderr);
    return 2;
  }
  const struct {
    const char* name;
    std::string (*draw)();
  } all[] = {{"corners", figures::corners},
             {"cubics", figures::cubics},
             {"edit-graph", figures::editGraph},
             {"rtree", figures::rtree}};
  for (const auto& figure : all) {
    const std::string path = std::string(argv[1]) + "/" + figure.name + ".svg";
    std::ofstream file(path, std::ios::binary);
    if (!(file << figure.draw() << std::flush)) {
      std::fprintf(stderr, "TQFigures: %s cannot be written\n", path.c_str());
      return 1;
    }
  }
  return 0;
}
