<?xml version="1.0" encoding="UTF-8"?>
<!--
  Dorvane: the preview of an invoice that another company sent, before it is booked as a bill.

  Receives the root element of an exchange file (InvoiceRet, with the sender's CompanyRet
  below it) and writes a whole HTML page: a strip that says what the import will do (who
  sent what, its number, date, lines and total, and what it becomes), then the invoice as
  its sender mailed it, under the sender's company header.

  importestimate.xslt and importsalesreceipt.xslt import this sheet for the page and the
  strip (named templates "import-page-head" and "import-strip").
-->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform">

  <xsl:import href="company.xslt"/>
  <xsl:import href="invoice.xslt"/>

  <xsl:output method="html" indent="no" encoding="US-ASCII"/>

  <xsl:template match="/">
    <xsl:apply-templates select="*"/>
  </xsl:template>

  <xsl:template match="InvoiceRet">
    <html>
      <xsl:call-template name="import-page-head"><xsl:with-param name="kind">Invoice</xsl:with-param></xsl:call-template>
      <body style="margin:16px;background-color:#ffffff;">
        <xsl:call-template name="import-strip">
          <xsl:with-param name="kind">Invoice</xsl:with-param>
          <xsl:with-param name="lines" select="InvoiceLineRet | InvoiceLineGroupRet"/>
          <xsl:with-param name="booked-as">Dorvane books it as a bill from this vendor (Accounts Payable), due as the invoice says.</xsl:with-param>
        </xsl:call-template>
        <xsl:apply-templates select="(.//CompanyRet)[1]"/>
        <xsl:apply-imports/>
      </body>
    </html>
  </xsl:template>

  <!-- The page's head: its title names the document and its sender. -->
  <xsl:template name="import-page-head">
    <xsl:param name="kind"/>
    <head>
      <title>
        <xsl:value-of select="concat($kind, ' ', RefNumber, ' from ', (.//CompanyRet/CompanyName)[1])"/>
      </title>
    </head>
  </xsl:template>

  <!-- What the import will do: sender, document, date, lines, total and the counter-document. -->
  <xsl:template name="import-strip">
    <xsl:param name="kind"/>
    <xsl:param name="lines" select="/.."/>
    <xsl:param name="booked-as"/>
    <xsl:variable name="sender" select="normalize-space((.//CompanyRet/CompanyName)[1])"/>
    <table width="660" cellpadding="0" cellspacing="0" border="0" style="{$page-style}margin-bottom:22px;">
      <tr>
        <td style="padding:10px 12px;background-color:{$shade};border-left:4px solid {$accent};">
          <div style="{$label-style}">Import preview</div>
          <div style="padding:4px 0 2px 0;font-size:15px;">
            <xsl:value-of select="concat($kind, ' ')"/>
            <b><xsl:value-of select="RefNumber"/></b>
            <xsl:if test="normalize-space(TxnDate) != ''">
              <xsl:text> of </xsl:text>
              <xsl:call-template name="date"><xsl:with-param name="value" select="TxnDate"/></xsl:call-template>
            </xsl:if>
            <xsl:text> from </xsl:text>
            <b>
              <xsl:choose>
                <xsl:when test="$sender != ''"><xsl:value-of select="$sender"/></xsl:when>
                <xsl:otherwise>an unnamed sender</xsl:otherwise>
              </xsl:choose>
            </b>
          </div>
          <div>
            <xsl:value-of select="count($lines)"/>
            <xsl:choose>
              <xsl:when test="count($lines) = 1"> line</xsl:when>
              <xsl:otherwise> lines</xsl:otherwise>
            </xsl:choose>
            <xsl:text>, total </xsl:text>
            <b>
              <xsl:call-template name="money">
                <xsl:with-param name="value"><xsl:call-template name="total"/></xsl:with-param>
              </xsl:call-template>
            </b>
            <xsl:text>. </xsl:text>
            <xsl:value-of select="$booked-as"/>
          </div>
          <div style="padding-top:4px;font-size:12px;color:{$muted};">
            <xsl:text>Items, item groups and terms are replaced by those of your import preferences; adjust them in QuickBooks after the import.</xsl:text>
          </div>
        </td>
      </tr>
    </table>
  </xsl:template>

</xsl:stylesheet>
