#include "platform/accessibility.h"

#include <algorithm>

namespace kwo::platform {

const Control* ControlList::Find(int id) const {
  const auto found = std::find_if(controls.begin(), controls.end(),
                                  [id](const Control& control) { return control.id == id; });
  return found == controls.end() ? nullptr : &*found;
}

const Control* ControlList::At(Point place) const {
  const auto found =
      std::find_if(controls.begin(), controls.end(), [place](const Control& control) {
        return control.role != Role::kList && control.place.Contains(place);
      });
  return found == controls.end() ? nullptr : &*found;
}

std::string ControlList::Tip(Point place) const {
  const Control* control = At(place);
  return control && !control->labelled ? control->name : std::string();
}

}  // namespace kwo::platform
