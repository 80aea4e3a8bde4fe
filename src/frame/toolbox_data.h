// Fixed design-time tables of the library's hidden toolbox form: one text
// per list item, fields separated by a tab character.
#ifndef TOVIK_FRAME_TOOLBOX_DATA_H_
#define TOVIK_FRAME_TOOLBOX_DATA_H_

#include <array>
#include <string_view>

namespace tovik {

// Items of the list box list_Layers: the layer-mark table, one row per
// mark: mark, layer name, colour index. AcadDocSpace.JLayer reads it into a
// text-compare dictionary the first time it is needed; any other mark has
// no layer.
inline constexpr std::array<std::string_view, 2> kListLayersItems = {
    "Rebar\tRebar\t1",
    "DET_STEEL\tDET_STEEL\t1",
};

}  // namespace tovik

#endif  // TOVIK_FRAME_TOOLBOX_DATA_H_
