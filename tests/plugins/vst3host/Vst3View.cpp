#include "travesty/view.h"

#include "plugins/vst3host/Vst3Instance.h"
// Behind all others, whose names X11 takes for macros.
#include "plugins/claphost/HostWindow.h"

namespace Quorvan::test {
namespace {

v3_timer_handler** timer = nullptr;

/// The host's run loop and the frame around a view, which hands it out.
constexpr auto kFine = [](auto...) -> v3_result { return V3_OK; };
const v3_run_loop_cpp kLoop{{No, One, One},
                            {kFine, kFine,
                             [](void*, v3_timer_handler** handler, uint64_t) -> v3_result {
                                 timer = handler;
                                 return V3_OK;
                             },
                             [](void*, v3_timer_handler**) -> v3_result {
                                 timer = nullptr;
                                 return V3_OK;
                             }}};
const void* const loop = &kLoop;
const v3_plugin_frame_cpp kFrame{
    {[](void*, const v3_tuid iid, void** object) -> v3_result {
         *object = v3_tuid_match(iid, v3_run_loop_iid) ? const_cast<const void**>(&loop) : nullptr;
         return *object == nullptr ? V3_NO_INTERFACE : V3_OK;
     },
     One, One},
    {[](void*, v3_plugin_view** view, v3_view_rect* size) -> v3_result {
        return v3_cpp_obj(view)->on_size(view, size);
    }}};

using Vst3ViewTest = ClapHost::OnDisplay<testing::Test>;

TEST_F(Vst3ViewTest, OpensAtTheHostsScaleMovesTakesSizesAndKeepsThem) {
    const void* frame = &kFrame;
    for (const auto& [scale, isLate] : {std::pair(1, false), {2, false}, {2, true}}) {
        Vst3 vst3;
        for (int life = 0; life < 3; ++life) {
            auto** const view = v3_cpp_obj(vst3.controller)->create_view(vst3.controller, "editor");
            const auto tell = [&, told = static_cast<float>(scale)] {
                v3_plugin_view_content_scale** scales = nullptr;
                v3_cpp_obj_query_interface(view, v3_plugin_view_content_scale_iid, &scales);
                EXPECT_EQ(v3_cpp_obj(scales)->set_content_scale_factor(scales, told), V3_OK);
                v3_cpp_obj_unref(scales);
            };
            if (!isLate)
                tell();
            v3_view_rect size{}, wide{0, 0, 1600, 1000};
            v3_cpp_obj(view)->get_size(view, &size);
            EXPECT_EQ(size.right, life > 0 ? wide.right : isLate ? 1280 : 1280 * scale);
            ClapHost::HostWindow window(display);
            v3_cpp_obj(view)->set_frame(view, As<v3_plugin_frame>(&frame));
            auto* const parent = reinterpret_cast<void*>(window.window);
            EXPECT_EQ(v3_cpp_obj(view)->attached(view, parent, V3_VIEW_PLATFORM_TYPE_X11), V3_OK);
            if (isLate)
                tell();
            v3_cpp_obj(view)->get_size(view, &size);
            EXPECT_EQ(size.right, life > 0 ? wide.right : 1280 * scale);
            const auto look = [&](const v3_view_rect& now) {
                return window.Look(now.right, now.bottom, [&] {
                    vst3.Run(480);
                    v3_cpp_obj(timer)->on_timer(timer);
                });
            };
            EXPECT_NE(look(size), look(size)) << "Sound goes through it, and nothing moves.";
            EXPECT_EQ(v3_cpp_obj(view)->on_size(view, &wide), V3_OK);
            look(wide);
            EXPECT_EQ(v3_cpp_obj(view)->removed(view), V3_OK);
            EXPECT_EQ(timer, nullptr);
            v3_cpp_obj_unref(view);
        }
    }
}

}  // namespace
}  // namespace Quorvan::test
