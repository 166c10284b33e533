#include "plugins/dpf/vst3/Vst3View.h"

#include <map>

#include "plugins/ui/window/FaceWindow.h"
#include "travesty/view.h"

namespace Quorvan::Plugins {

namespace {

/// What a view's host has told, and the interface by which it tells the scale. As an object of the
/// interface's, its first member points at the functions; it counts as a part of the view.
struct View {
    const v3_plugin_view_content_scale_cpp* functions;
    v3_plugin_view** framework;
    DpfPlugin* plugin;
    float scale = 0.0f;
    bool isOpen = false;
};

std::map<const void*, const Vst3Processor*> processors;  ///< of controllers
std::map<const void*, View> views;

/// The framework's functions for all instances; those below stand in their place in each of its
/// views and controllers.
v3_plugin_view_cpp framework;
decltype(v3_edit_controller::create_view) frameworkCreates = nullptr;

v3_result Query(void* self, const v3_tuid id, void** object) {
    if (!v3_tuid_match(id, v3_plugin_view_content_scale_iid))
        return framework.query_interface(self, id, object);
    framework.ref(self);
    *object = &views.at(self);
    return V3_OK;
}

uint32_t Unref(void* self) {
    const uint32_t left = framework.unref(self);
    if (left == 0)
        views.erase(self);
    return left;
}

v3_result Attached(void* self, void* parent, const char* kind) {
    const v3_result result = framework.view.attached(self, parent, kind);
    views.at(self).isOpen = result == V3_OK;
    return result;
}

v3_result Removed(void* self) {
    views.at(self).isOpen = false;
    return framework.view.removed(self);
}

/// The framework is asked too: it notes that the host knows a size, and names the window's to it if
/// that comes to be another one.
v3_result GetSize(void* self, v3_view_rect* rect) {
    const v3_result result = framework.view.get_size(self, rect);
    const View& view = views.at(self);
    if (result != V3_OK || view.isOpen || view.plugin == nullptr)
        return result;
    const double scale = view.scale > 0.0f ? static_cast<double>(view.scale) : 1.0;
    const auto size = Ui::FaceWindow::FirstSize(view.plugin->Played(), scale);
    *rect = {0, 0, static_cast<int32_t>(size.width), static_cast<int32_t>(size.height)};
    return result;
}

/// The framework answers that it failed where the window is not open yet, which is when hosts tell.
v3_result SetScale(void* self, float scale) {
    View& view = *static_cast<View*>(self);
    view.scale = scale;
    v3_plugin_view_content_scale** inner = nullptr;
    if (framework.query_interface(view.framework, v3_plugin_view_content_scale_iid,
                                  reinterpret_cast<void**>(&inner)) == V3_OK) {
        v3_cpp_obj(inner)->set_content_scale_factor(inner, scale);
        v3_cpp_obj_unref(inner);
    }
    return V3_OK;
}

v3_plugin_view_content_scale_cpp ScaleFunctions() {
    v3_plugin_view_content_scale_cpp to;
    to.query_interface = [](void* self, const v3_tuid id, void** object) {
        return Query(static_cast<View*>(self)->framework, id, object);
    };
    to.ref = [](void* self) { return framework.ref(static_cast<View*>(self)->framework); };
    to.unref = [](void* self) { return Unref(static_cast<View*>(self)->framework); };
    to.scale.set_content_scale_factor = SetScale;
    return to;
}

v3_plugin_view** CreateView(void* controller, const char* name) {
    v3_plugin_view** const view = frameworkCreates(controller, name);
    const auto processor = processors.find(controller);
    if (view == nullptr || processor == processors.end())
        return view;
    auto& functions = *static_cast<v3_plugin_view_cpp*>(static_cast<void*>(*view));
    [[maybe_unused]] static const bool isKept = (framework = functions, true);
    static const v3_plugin_view_content_scale_cpp scaleFunctions = ScaleFunctions();
    views[view] = {&scaleFunctions, view, processor->second->Played()};
    functions.query_interface = Query;
    functions.unref = Unref;
    functions.view.attached = Attached;
    functions.view.removed = Removed;
    functions.view.get_size = GetSize;
    return view;
}

}  // namespace

void Vst3View::AddSizes(v3_edit_controller** controller, const Vst3Processor& processor) {
    processors[controller] = &processor;
    auto& functions = *static_cast<v3_edit_controller_cpp*>(static_cast<void*>(*controller));
    if (functions.ctrl.create_view == CreateView)
        return;
    frameworkCreates = functions.ctrl.create_view;
    functions.ctrl.create_view = CreateView;
}

void Vst3View::Forget(const Vst3Processor& processor) {
    std::erase_if(processors, [&](const auto& one) { return one.second == &processor; });
}

}  // namespace Quorvan::Plugins
