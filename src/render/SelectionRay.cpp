#include "foundation/SpecialMath.h"
#include "render/Device.h"

D3DVECTOR SpecialMath::GetSelectionRay(const POINT& point, const D3DVECTOR& camera_position) const {
    const D3DMATRIX& view = crvMatrices[CRM_VIEW];
    const D3DMATRIX& proj = crvMatrices[CRM_PROJ];
    const D3DVECTOR right = crMGetCol(view, 0), up = crMGetCol(view, 1), front = crMGetCol(view, 2);
    const float z_near = -(proj.m[3][2] / proj.m[2][2]);
    const float half_width = z_near / proj.m[0][0];
    const float half_height = z_near / proj.m[1][1];
    const D3DVECTOR corner = camera_position + front * z_near - right * half_width - up * half_height;
    const float px = static_cast<float>(point.x) / static_cast<float>(crvViewportW);
    const float py = 1.0f - static_cast<float>(point.y) / static_cast<float>(crvViewportH);
    const D3DVECTOR target = corner + right * (2.0f * half_width * px) + up * (2.0f * half_height * py);
    return Normalize(target - camera_position);
}
