"""nginx serving the same site as a gateway, for scripts/bench."""

import os

from gateway_process import Server, free_port

NGINX = """daemon off; worker_processes 2; pid {folder}/nginx.pid; error_log {folder}/error.log;
events {{ worker_connections 4096; }}
http {{
  access_log off; sendfile on; tcp_nopush on; keepalive_timeout 0; send_timeout 600;
  client_body_temp_path {folder}/b; proxy_temp_path {folder}/p; fastcgi_temp_path {folder}/f;
  uwsgi_temp_path {folder}/u; scgi_temp_path {folder}/s;
  server {{
    listen 127.0.0.1:{port}{ssl} backlog=4096; root {root};
    ssl_certificate {certificate}; ssl_certificate_key {key};
    ssl_protocols TLSv1.2 TLSv1.3; ssl_session_cache off; ssl_session_tickets off;
  }}
}}
"""


class Nginx(Server):
    """An nginx with two workers that serves a site on a free port."""

    def __init__(self, site, tls):
        port = free_port()
        folder = site.folder / f"nginx-{port}"
        folder.mkdir()
        folder.chmod(0o755)
        config = folder / "nginx.conf"
        config.write_text(
            ("user root;\n" if os.geteuid() == 0 else "") +
            NGINX.format(folder=folder, port=port, ssl=" ssl" if tls else "",
                         root=site.root, certificate=site.certificate, key=site.key))
        super().__init__(["nginx", "-c", config, "-e", folder / "error.log"], port, tls)
