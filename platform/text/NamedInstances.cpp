#include "platform/text/NamedInstances.h"

#include <algorithm>

#include <hb-ot.h>

#include "platform/text/FontFace.h"

namespace qz {
namespace {

constexpr hb_ot_name_id_t kVariationsPostScriptPrefix = 25;

std::string nameOf(hb_face_t* face, hb_ot_name_id_t id) {
    if (id == HB_OT_NAME_ID_INVALID) return {};
    const hb_language_t english = hb_language_from_string("en", -1);
    unsigned int size = hb_ot_name_get_utf8(face, id, english, nullptr, nullptr);
    std::string name(size, '\0');
    // The buffer needs room for a terminating zero.
    unsigned int capacity = size + 1;
    hb_ot_name_get_utf8(face, id, english, &capacity, name.data());
    return name;
}

std::string lettersAndDigits(const std::string& name) {
    std::string kept;
    std::ranges::copy_if(name, std::back_inserter(kept), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    });
    return kept;
}

std::string familyPrefix(hb_face_t* face) {
    for (const hb_ot_name_id_t id : {kVariationsPostScriptPrefix, hb_ot_name_id_t{HB_OT_NAME_ID_TYPOGRAPHIC_FAMILY},
                                     hb_ot_name_id_t{HB_OT_NAME_ID_FONT_FAMILY}}) {
        if (std::string prefix = lettersAndDigits(nameOf(face, id)); !prefix.empty()) return prefix;
    }
    return {};
}

bool isDefaultPlace(hb_face_t* face, unsigned int instance) {
    unsigned int axisCount = hb_ot_var_get_axis_count(face);
    std::vector<hb_ot_var_axis_info_t> axes(axisCount);
    hb_ot_var_get_axis_infos(face, 0, &axisCount, axes.data());
    std::vector<float> place(axes.size());
    unsigned int length = axisCount;
    hb_ot_var_named_instance_get_design_coords(face, instance, &length, place.data());
    for (size_t i = 0; i < axes.size(); ++i) {
        if (i >= length || place[i] != axes[i].default_value) return false;
    }
    return true;
}

}  // namespace

std::vector<NamedInstance> namedInstances(const std::string& path, int face) {
    const HarfBuzzRef<hb_blob_t> file(hb_blob_create_from_file_or_fail(path.c_str()));
    if (!file) return {};
    const HarfBuzzRef<hb_face_t> tables(hb_face_create(file.get(), static_cast<unsigned int>(face)));
    std::vector<NamedInstance> instances(hb_ot_var_get_named_instance_count(tables.get()));
    const std::string prefix = instances.empty() ? std::string() : familyPrefix(tables.get());
    for (unsigned int i = 0; i < instances.size(); ++i) {
        NamedInstance& instance = instances[i];
        instance.number = static_cast<int>(i) + 1;
        instance.isDefault = isDefaultPlace(tables.get(), i);
        instance.styleName = nameOf(tables.get(), hb_ot_var_named_instance_get_subfamily_name_id(tables.get(), i));
        instance.postScriptName =
            nameOf(tables.get(), hb_ot_var_named_instance_get_postscript_name_id(tables.get(), i));
        if (instance.postScriptName.empty()) {
            instance.postScriptName = prefix + "-" + lettersAndDigits(instance.styleName);
        }
    }
    return instances;
}

}  // namespace qz
