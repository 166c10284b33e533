#include "plugins/clap/picture/PictureWindow.h"

#include <cairo-xlib.h>

#include <stdexcept>

#include "clap/ext/gui.h"

namespace Quorvan::Clap {

PictureWindow::PictureWindow(const PictureHost& owner, double scale)
    : host(owner), display(XOpenDisplay(nullptr)) {
    if (display == nullptr)
        throw std::runtime_error("There is no display.");
    const auto& gui = host.Get<clap_plugin_gui_t>(CLAP_EXT_GUI);
    const clap_plugin_t* const plugin = &host.Plugin();
    bool opens = gui.create(plugin, CLAP_WINDOW_API_X11, false);
    gui.set_scale(plugin, scale);
    opens = opens && gui.get_size(plugin, &width, &height);
    outer = XCreateSimpleWindow(display, DefaultRootWindow(display), 0, 0, width, height, 0, 0, 0);
    XMapWindow(display, outer);
    XSync(display, False);
    clap_window_t parent{};
    parent.api = CLAP_WINDOW_API_X11;
    parent.x11 = outer;
    if (!opens || !gui.set_parent(plugin, &parent) || !gui.show(plugin))
        throw std::runtime_error("The plug-in's window does not open.");
}

PictureWindow::~PictureWindow() {
    const auto& gui = host.Get<clap_plugin_gui_t>(CLAP_EXT_GUI);
    gui.hide(&host.Plugin());
    gui.destroy(&host.Plugin());
    XCloseDisplay(display);
}

Window PictureWindow::Inner() const {
    Window root = 0, parent = 0, *children = nullptr;
    unsigned count = 0;
    XQueryTree(display, outer, &root, &parent, &children, &count);
    const Window inner = count == 1 ? children[0] : 0;
    if (children != nullptr)
        XFree(children);
    if (inner == 0)
        throw std::runtime_error("The plug-in's window is not in the host's.");
    return inner;
}

void PictureWindow::Send(int type, int x, int y, unsigned button, unsigned state) {
    XEvent event{};
    if (type == MotionNotify) {
        event.xmotion.state = state;
        event.xmotion.same_screen = True;
    } else {
        event.xbutton.state = state;
        event.xbutton.button = button;
        event.xbutton.same_screen = True;
    }
    // These lie in one place in both.
    event.xbutton.type = type;
    event.xbutton.window = Inner();
    event.xbutton.root = DefaultRootWindow(display);
    event.xbutton.time = time += 10;
    event.xbutton.x = event.xbutton.x_root = x;
    event.xbutton.y = event.xbutton.y_root = y;
    XSendEvent(display, event.xbutton.window, True,
               ButtonPressMask | ButtonReleaseMask | PointerMotionMask, &event);
    XSync(display, False);
}

void PictureWindow::Click(int x, int y) {
    Send(MotionNotify, x, y, 0, 0);
    Send(ButtonPress, x, y, Button1, 0);
    Send(ButtonRelease, x, y, Button1, Button1Mask);
}

void PictureWindow::Leave() { Send(MotionNotify, -10, -10, 0, 0); }

void PictureWindow::Save(const std::string& file) const {
    XWindowAttributes shown{};
    XGetWindowAttributes(display, Inner(), &shown);
    cairo_surface_t* const window =
        cairo_xlib_surface_create(display, Inner(), shown.visual, shown.width, shown.height);
    cairo_surface_t* const picture =
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, shown.width, shown.height);
    cairo_t* const context = cairo_create(picture);
    cairo_set_source_surface(context, window, 0.0, 0.0);
    cairo_paint(context);
    const bool isDrawn = cairo_status(context) == CAIRO_STATUS_SUCCESS;
    const bool isSaved =
        isDrawn && cairo_surface_write_to_png(picture, file.c_str()) == CAIRO_STATUS_SUCCESS;
    cairo_destroy(context);
    cairo_surface_destroy(picture);
    cairo_surface_destroy(window);
    if (!isSaved)
        throw std::runtime_error("\"" + file + "\" can't be written.");
}

}  // namespace Quorvan::Clap
