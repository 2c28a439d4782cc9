#pragma once
// Checks a written model with the engine's own geometry before it is kept:
// each object rebuilt as the loader builds it (an indexed shape, joining
// corners by value), every point written once and used, every face kept,
// each object a closed surface facing outwards, and, for untextured models,
// the three levels of detail the model manager will make (each the level
// before reduced to half its points) all succeeding and roughly halving the
// triangles.
#include "tools/ObjReader.h"

#include <array>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

namespace tools {

struct PartFigures {
    std::string material;
    std::string program;
    std::array<std::size_t, 4> points{};
    std::array<std::size_t, 4> triangles{};
};

class ModelCheck {
public:
    // Seeds the engine's random draws: the reductions sample points at random.
    explicit ModelCheck(unsigned seed = 1) : seed(seed) {}

    // Checks the model, writes one line per object and one per fault, and
    // answers whether there was none.
    bool check(const std::string& name, const ObjModel& model, std::ostream& report);
    const std::vector<PartFigures>& getFigures() const { return figures; }
    // Reads <directory>/<name>.obj as the engine would and checks it.
    bool checkWritten(const std::string& directory, const std::string& name, std::ostream& report);

    // A halving keeps between these shares of the triangles.
    static constexpr double minHalving = 0.3;
    static constexpr double maxHalving = 0.7;

private:
    bool checkObject(const ObjModel& model, const ObjObject& object, PartFigures& figures,
                     std::vector<std::string>& faults) const;
    static bool checkHalvings(const ObjModel& model, const ObjObject& object, PartFigures& figures,
                              std::vector<std::string>& faults);
    static void checkUnusedPoints(const ObjModel& model, std::vector<std::string>& faults);

    unsigned seed;
    std::vector<PartFigures> figures;
};

}  // namespace tools
