<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the preview of an estimate that another company sent, before it is booked as a
  purchase order.

  Receives the root element of an exchange file (EstimateRet, with the sender's CompanyRet
  below it) and writes a whole HTML page: the import strip of importinvoice.xslt, then the
  estimate as its sender mailed it, under the sender's company header.
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="importinvoice.xslt"/>
  <xsl:import href="estimate.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="EstimateRet">
    <html>
      <xsl:call-template name="import-page-head"><xsl:with-param name="kind">Estimate</xsl:with-param></xsl:call-template>
      <body style="margin:16px;background-color:#ffffff;">
        <xsl:call-template name="import-strip">
          <xsl:with-param name="kind">Estimate</xsl:with-param>
          <xsl:with-param name="lines" select="EstimateLineRet | EstimateLineGroupRet"/>
          <xsl:with-param name="booked-as">Dorvane books it as a purchase order to this vendor.</xsl:with-param>
        </xsl:call-template>
        <xsl:apply-templates select="(.//CompanyRet)[1]"/>
        <xsl:apply-imports/>
      </body>
    </html>
  </xsl:template>

</xsl:stylesheet>
