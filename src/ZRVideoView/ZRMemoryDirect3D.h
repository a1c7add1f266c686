#pragma once

#include "ZRDirect3D.h"
#include "ZRVideoPainter.h"

#include <functional>
#include <memory>

// The operations of Direct3D on pictures in memory, for systems without it: surfaces are YV12
// buffers, StretchRect only notes its source, and Present has a painter show that, straight at the
// window's size. Window handles are widgets. There are no hardware surfaces and no extra chains.
class ZRMemoryDirect3D : public ZRDirect3DModule
{
public:
    // Null: this kind can't paint on that window, and CreateDevice fails.
    using PainterFactory = std::function<std::unique_ptr<ZRVideoPainter>(QWidget *)>;
    explicit ZRMemoryDirect3D(PainterFactory createPainter);

    ZRDirect3DWindow windowHandle(QWidget *widget) override;
    ZRDirect3D *create(unsigned sdkVersion) override;
    ZRDirect3DSurface *hardwareSurface(void *surface) override;

private:
    PainterFactory createPainter;
};
